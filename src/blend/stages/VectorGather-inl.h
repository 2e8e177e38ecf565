// Spans of which many pixels stay as they are. Included once per target.

#if defined(IMAGEOP_VECTOR_GATHER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_GATHER_INL_H
#undef IMAGEOP_VECTOR_GATHER_INL_H
#else
#define IMAGEOP_VECTOR_GATHER_INL_H
#endif

#include <hwy/cache_control.h>
#include <vantu/BlendMode.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorForms-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// A pixel of a span: its row and its place in that.
struct Place {
    std::size_t row, x;
};

/// Paints the first pixels of rows, `end` of each, which are whole steps, from a place on: all, or to a step from which
/// on it pays to gather.
/// @return the place to go on with.
template <typename Stage, typename BlendFunction>
HWY_FLATTEN HWY_NOINLINE Place PaintSteps(const CompositeSpan& span, Place place, std::size_t end,
                                          const BlendFunction& blend) {
    CompositeSpan rest = span.FromRow(place.row);
    for (; place.row < span.rows; ++place.row, rest.GoToRow(1)) {
        std::size_t first = std::exchange(place.x, 0);
        while (first < end) {
            if constexpr (requires { Stage::PaintWhileOpaque(rest, first, end); }) {
                first = Stage::PaintWhileOpaque(rest, first, end);
            }
            // It is not worth while to ask at each step whether the next one is opaque again.
            for (const std::size_t some = std::min(end, first + 4 * StepPixels()); first < some;
                 first += StepPixels()) {
                if (!Stage::Paint(rest, first, blend)) return {place.row, first};
            }
        }
    }
    return place;
}

/// Pixels of a span: so many of each of some rows, from a place on.
struct Part {
    Place first;
    std::size_t width, rows;
};

/// A span with many pixels that stay as they are, outside groups and without opacities. Those that need painting are
/// gathered, painted and put back.
template <typename Stage>
class GatheredPixels;

template <BlendMode Mode, PackedColors Colors>
class GatheredPixels<PlainStage<Mode, Colors>> {
public:
    static constexpr std::size_t kMostPixels = 1024;

    explicit GatheredPixels(const CompositeSpan& span)
        : span_(span), replaces_(Mode == BlendMode::Normal && span.alpha == 255), gathered_(span) {
        gathered_.rows = 1;
        gathered_.count = 0;  // nothing to be gathered again
        gathered_.source = source_;
        gathered_.target = target_;
        gathered_.select = nullptr;
    }

    /// The part to gather from a place on: of one row, or of as many whole rows as there is room for.
    [[nodiscard]] Part PartFrom(const Place& first) const {
        const std::size_t left = span_.count - first.x;
        if (left < span_.count || left > kMostPixels / 2) return {first, std::min(left, kMostPixels), 1};
        const std::size_t room = kMostPixels / RoundUpTo(left, hn::Lanes(kPixels));
        return {first, left, std::min(room, span_.rows - first.row)};
    }

    /// Whether all pixels may be painted, and by a few of narrow rows it seems not to pay to choose those that need it.
    [[nodiscard]] bool PaysToPaintAll(const Part& part) const {
        if (span_.select != nullptr) return false;
        const FirstPixels pixels(std::min(part.width, hn::Lanes(kPixels)));
        std::size_t looked = 0, painted = 0;
        for (std::size_t row = 0; row < part.rows; row += (part.rows + 3) / 4) {
            const CompositeSpan rest = span_.FromRow(part.first.row + row);
            const Pixels source = pixels.Load(rest.source);
            const PixelMask seen = Seen(source);
            const unsigned int bits = Bits(replaces_ ? hn::AndNot(Opaque(source), seen) : seen);
            painted += static_cast<std::size_t>(std::popcount(bits));
            looked += pixels.Count();
        }
        return 4 * painted > 3 * looked;
    }

    /// Paints all pixels.
    void PaintAll(const Part& part, const Blend<Mode>& blend) {
        std::size_t count = 0;
        EachVector(part, [&](const auto& pixels, const unsigned char* from, const unsigned char* onto) HWY_ATTR {
            StorePixels(pixels.Load(from), source_ + count * kPackedBytes);
            StorePixels(pixels.Load(onto), target_ + count * kPackedBytes);
            count += pixels.Count();
        });
        Fill(source_, count);
        Fill(target_, count);
        PaintSteps<PlainStage<Mode, Colors>>(gathered_, {0, 0}, count, blend);
        const unsigned char* packed = target_;
        EachVector(part, [&](const auto& pixels, const unsigned char*, unsigned char* onto) HWY_ATTR {
            pixels.Store(LoadPixels(packed), onto);
            packed += pixels.Count() * kPackedBytes;
        });
    }

    /// Paints pixels. @return how many needed painting.
    std::size_t Paint(const Part& part, const Blend<Mode>& blend) {
        const std::size_t gathered = Gather(part);
        if (gathered == 0) return 0;
        // The first pixel fills up the last step, so that what holds for all of them holds for the step.
        Fill(source_, gathered);
        Fill(target_, gathered);
        PaintSteps<PlainStage<Mode, Colors>>(gathered_, {0, 0}, gathered, blend);
        PutBack(part);
        return gathered;
    }

private:
    static std::size_t RoundUpTo(std::size_t n, std::size_t unit) { return (n + unit - 1) / unit * unit; }

    /// Calls `visit(pixels, source, target)` for each vector of a part: which of its pixels belong to it, and where
    /// they are.
    template <typename Visit>
    HWY_INLINE void EachVector(const Part& part, Visit visit) const {
        const std::size_t lanes = hn::Lanes(kPixels);
        const std::size_t rest = part.width % lanes;
        const AllPixels all;
        const FirstPixels last(rest);
        const CompositeSpan span = span_.FromRow(part.first.row);
        const unsigned char* sourceRow = span.source + part.first.x * kPackedBytes;
        unsigned char* targetRow = span.target + part.first.x * kPackedBytes;
        for (std::size_t row = 0; row < part.rows; ++row, sourceRow += span.sourceStep, targetRow += span.targetStep) {
            const unsigned char* source = sourceRow;
            unsigned char* target = targetRow;
            for (std::size_t i = rest; i < part.width; i += lanes) {
                visit(all, source, target);
                source += lanes * kPackedBytes;
                target += lanes * kPackedBytes;
            }
            if (rest != 0) visit(last, source, target);
        }
    }

    /// Pixels that are opaque, and those that are not clear.
    static HWY_INLINE PixelMask Opaque(Pixels v) {
        const Pixels full = hn::Set(kPixels, kPackedAlpha);
        return hn::Eq(hn::And(v, full), full);
    }
    static HWY_INLINE PixelMask Seen(Pixels v) {
        return hn::Ne(hn::And(v, hn::Set(kPixels, kPackedAlpha)), hn::Zero(kPixels));
    }

    /// Collects the pixels that need painting. Where Normal at full alpha replaces pixels it does so at once.
    std::size_t Gather(const Part& part) {
        const unsigned char* select = span_.select != nullptr ? span_.select + part.first.x : nullptr;
        std::size_t gathered = 0;
        std::uint16_t* live = live_;
        EachVector(part, [&](const auto& pixels, const unsigned char* from, unsigned char* onto) HWY_ATTR {
            const Pixels source = pixels.Load(from);
            const Pixels target = pixels.Load(onto);
            PixelMask painted = Seen(source);
            if (select != nullptr) {
                painted = hn::And(painted, hn::Ne(pixels.LoadBytes(select), hn::Zero(kPixels)));
                select += hn::Lanes(kPixels);
            }
            if (replaces_) {
                const PixelMask replaced = hn::And(painted, Opaque(source));
                pixels.StoreWhere(replaced, source, onto);
                painted = hn::AndNot(replaced, painted);
            }
            const unsigned int bits = Bits(painted);
            *live++ = static_cast<std::uint16_t>(bits);
            StorePixels(Packed(source, bits), source_ + gathered * kPackedBytes);
            StorePixels(Packed(target, bits), target_ + gathered * kPackedBytes);
            gathered += static_cast<std::size_t>(std::popcount(bits));
        });
        return gathered;
    }

    static void Fill(unsigned char* packed, std::size_t first) {
        std::uint32_t pixel;
        std::memcpy(&pixel, packed, sizeof pixel);
        for (std::size_t i = 0; i < StepPixels(); i += hn::Lanes(kPixels)) {
            StorePixels(hn::Set(kPixels, pixel), packed + (first + i) * kPackedBytes);
        }
    }

    void PutBack(const Part& part) const {
        // Painting what was gathered leaves memory idle: the pixels after the next ones are asked for already here.
        const bool wholeRows = part.width == span_.count;
        const std::size_t down = wholeRows ? std::min(2 * part.rows, span_.rows - part.first.row - part.rows) : 0;
        const std::size_t right = wholeRows ? 0 : std::min(2 * part.width, span_.count - part.first.x - part.width);
        const auto ahead = [&](std::int64_t step) {
            return static_cast<std::int64_t>(down) * step + static_cast<std::int64_t>(right * kPackedBytes);
        };
        const std::int64_t sourceAhead = ahead(span_.sourceStep), targetAhead = ahead(span_.targetStep);
        const unsigned char* packed = target_;
        const std::uint16_t* live = live_;
        EachVector(part, [&](const auto& pixels, const unsigned char* source, unsigned char* target) HWY_ATTR {
            if (targetAhead != 0) {
                hwy::Prefetch(source + sourceAhead);
                hwy::Prefetch(target + targetAhead);
            }
            // No branch leaves out vectors without a pixel to paint: where their pattern is new to the processor, wrong
            // guesses cost more than the work.
            const unsigned int bits = *live++;
            pixels.StoreWhere(MaskOf(bits), Unpacked(LoadPixels(packed), bits), target);
            packed += kPackedBytes * static_cast<std::size_t>(std::popcount(bits));
        });
    }

    static constexpr std::size_t kMostStep = kBlocks * HWY_MAX_BYTES / 2;

    const CompositeSpan& span_;
    const bool replaces_;
    CompositeSpan gathered_;
    alignas(64) unsigned char source_[(kMostPixels + kMostStep) * kPackedBytes];
    alignas(64) unsigned char target_[(kMostPixels + kMostStep) * kPackedBytes];
    std::uint16_t live_[kMostPixels / 4];
};

/// Paints pixels of a span from a place on: all, where rows are narrower than a step, else while few of them need it.
/// @return the place to go on with.
template <typename Stage, BlendMode Mode>
HWY_NOINLINE Place PaintGathered(const CompositeSpan& span, Place place, const Blend<Mode>& blend) {
    GatheredPixels<Stage> gathered(span);
    const bool narrow = span.count < StepPixels();
    while (place.row < span.rows) {
        const Part part = gathered.PartFrom(place);
        const std::size_t count = part.width * part.rows;
        std::size_t painted = 0;
        if (narrow && gathered.PaysToPaintAll(part)) {
            gathered.PaintAll(part, blend);
        } else {
            painted = gathered.Paint(part, blend);
        }
        place.x += part.width;
        if (place.x == span.count) place = {place.row + part.rows, 0};
        if (!narrow && (painted == 0 || painted > count - count / 4)) break;
    }
    return place;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
