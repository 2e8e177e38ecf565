// Spans of which many pixels stay as they are. Included once per target.

#if defined(IMAGEOP_VECTOR_GATHER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_GATHER_INL_H
#undef IMAGEOP_VECTOR_GATHER_INL_H
#else
#define IMAGEOP_VECTOR_GATHER_INL_H
#endif

#include <vantu/BlendMode.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorForms-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Paints whole steps of a span from pixel `first` to `end`, or to one from which on it pays to gather.
/// @return the pixel to go on with.
template <typename Stage, typename BlendFunction>
HWY_NOINLINE std::size_t PaintSteps(const CompositeSpan& span, std::size_t first, std::size_t end,
                                    const BlendFunction& blend) {
    while (first < end) {
        if constexpr (requires { Stage::PaintWhileOpaque(span, first, end); }) {
            first = Stage::PaintWhileOpaque(span, first, end);
        }
        // It is not worth while to ask at each step whether the next one is opaque again.
        for (const std::size_t some = std::min(end, first + 4 * StepPixels()); first < some; first += StepPixels()) {
            if (!Stage::Paint(span, first, blend)) return first;
        }
    }
    return first;
}

/// A pixel of a span: its row and its place in that.
struct Place {
    std::size_t row, x;
};

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

    explicit GatheredPixels(const CompositeSpan& span) : span_(span), gathered_(span) {
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

    /// Paints pixels. @return how many needed painting.
    std::size_t Paint(const Part& part, const Blend<Mode>& blend) {
        const std::size_t gathered = Gather(part);
        if (gathered == 0) return 0;
        // The first pixel fills up the last step, so that what holds for all of them holds for the step.
        Fill(source_, gathered);
        Fill(target_, gathered);
        PaintSteps<PlainStage<Mode, Colors>>(gathered_, 0, gathered, blend);
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
        const std::size_t x = part.first.x * kPackedBytes;
        for (std::size_t row = 0; row < part.rows; ++row) {
            const auto down = static_cast<std::int64_t>(part.first.row + row);
            const unsigned char* source = span_.source + span_.sourceStep * down + x;
            unsigned char* target = span_.target + span_.targetStep * down + x;
            for (std::size_t i = rest; i < part.width; i += lanes) {
                visit(all, source, target);
                source += lanes * kPackedBytes;
                target += lanes * kPackedBytes;
            }
            if (rest != 0) visit(last, source, target);
        }
    }

    /// Collects the pixels that need painting. Where Normal at full alpha replaces pixels it does so at once.
    std::size_t Gather(const Part& part) {
        const Pixels opaque = hn::Set(kPixels, kPackedAlpha);
        const unsigned char* select = span_.select != nullptr ? span_.select + part.first.x : nullptr;
        const bool replaces = Mode == BlendMode::Normal && span_.alpha == 255;
        std::size_t gathered = 0;
        std::uint16_t* live = live_;
        EachVector(part, [&](const auto& pixels, const unsigned char* from, unsigned char* onto) HWY_ATTR {
            const Pixels source = pixels.Load(from);
            const Pixels target = pixels.Load(onto);
            const Pixels alpha = hn::And(source, opaque);
            PixelMask painted = hn::Ne(alpha, hn::Zero(kPixels));
            if (select != nullptr) {
                painted = hn::And(painted, hn::Ne(pixels.LoadBytes(select), hn::Zero(kPixels)));
                select += hn::Lanes(kPixels);
            }
            if (replaces) {
                const PixelMask replaced = hn::And(painted, hn::Eq(alpha, opaque));
                pixels.Store(hn::IfThenElse(replaced, source, target), onto);
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
        const unsigned char* packed = target_;
        const std::uint16_t* live = live_;
        EachVector(part, [&](const auto& pixels, const unsigned char*, unsigned char* onto) HWY_ATTR {
            // No branch leaves out vectors without a pixel to paint: where their pattern is new to the processor, wrong
            // guesses cost more than the work.
            const unsigned int bits = *live++;
            pixels.Store(Unpacked(LoadPixels(packed), bits, pixels.Load(onto)), onto);
            packed += kPackedBytes * static_cast<std::size_t>(std::popcount(bits));
        });
    }

    static constexpr std::size_t kMostStep = kBlocks * HWY_MAX_BYTES / 2;

    const CompositeSpan& span_;
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
        const std::size_t painted = gathered.Paint(part, blend);
        place.x += part.width;
        if (place.x == span.count) place = {place.row + part.rows, 0};
        if (!narrow && painted > count - count / 4) break;
    }
    return place;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
