// Pixels of narrow rows, and of spans of which many stay as they are. Included once per target.

#if defined(IMAGEOP_VECTOR_GATHER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_GATHER_INL_H
#undef IMAGEOP_VECTOR_GATHER_INL_H
#else
#define IMAGEOP_VECTOR_GATHER_INL_H
#endif

#include <hwy/cache_control.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorFirst-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// A pixel of a span: its row and its place in that.
struct Place {
    std::size_t row, x;
};

/// Pixels of a span: so many of each of some rows, from a place on.
struct Part {
    Place first;
    std::size_t width, rows;
};

/// Pixels of a span outside groups and without opacities, one behind the other in buffers of their own: all pixels of
/// a part, or those that need painting. The code for them is the same in all modes.
class GatheredPixels {
public:
    static constexpr std::size_t kMostPixels = 1024;

    /// @param replaces whether opaque pixels of the source replace those of the target.
    GatheredPixels(const CompositeSpan& span, bool replaces) : span_(span), replaces_(replaces) {
        gathered_.source = source_;
        gathered_.target = target_;
        gathered_.alpha = span.alpha;
        gathered_.keepClear = span.keepClear;
    }

    /// The pixels at hand as a span for the stages, filled up to whole steps.
    [[nodiscard]] const CompositeSpan& AsSpan() const { return gathered_; }

    /// The part to go on with from a place on: of one row, or of as many whole rows as there is room for.
    [[nodiscard]] Part PartFrom(const Place& first) const {
        const std::size_t left = span_.count - first.x;
        if (left < span_.count || left > kMostPixels / 2) return {first, std::min(left, kMostPixels), 1};
        const std::size_t room = kMostPixels / RoundUpTo(left, hn::Lanes(kPixels));
        return {first, left, std::min(room, span_.rows - first.row)};
    }

    /// Takes the pixels of a part that need painting, and replaces those that an opaque source does. Takes all pixels
    /// instead where it may and where it does not seem to pay to choose. @return how many.
    HWY_NOINLINE std::size_t Take(const Part& part, bool mayTakeAll) {
        takenAll_ = mayTakeAll && NeedsMost(part);
        const std::size_t count = takenAll_ ? TakeAll(part) : TakeChosen(part);
        if (count != 0) {
            FillUp(source_, count);
            FillUp(target_, count);
        }
        return count;
    }

    /// Puts the pixels of a part that were taken back.
    HWY_INLINE void PutBack(const Part& part) const { takenAll_ ? PutAllBack(part) : PutChosenBack(part); }

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

    /// Which pixels are opaque, and which are not clear.
    static HWY_INLINE PixelMask Opaque(Pixels v) {
        const Pixels full = hn::Set(kPixels, kPackedAlpha);
        return hn::Eq(hn::And(v, full), full);
    }
    static HWY_INLINE PixelMask Seen(Pixels v) {
        return hn::Ne(hn::And(v, hn::Set(kPixels, kPackedAlpha)), hn::Zero(kPixels));
    }

    /// The first pixel fills up the last step, so that what holds for all of them holds for the step.
    static HWY_INLINE void FillUp(unsigned char* packed, std::size_t count) {
        std::uint32_t pixel;
        std::memcpy(&pixel, packed, sizeof pixel);
        for (std::size_t i = 0; i < StepPixels(); i += hn::Lanes(kPixels)) {
            StorePixels(hn::Set(kPixels, pixel), packed + (count + i) * kPackedBytes);
        }
    }

    /// Whether by a few pixels it seems that most of a part need painting.
    [[nodiscard]] HWY_INLINE bool NeedsMost(const Part& part) const {
        const FirstPixels pixels(std::min(part.width, hn::Lanes(kPixels)));
        std::size_t looked = 0, painted = 0;
        for (std::size_t row = 0; row < part.rows; row += (part.rows + 3) / 4) {
            const Pixels source = pixels.Load(span_.FromRow(part.first.row + row).source);
            const PixelMask seen = Seen(source);
            const unsigned int bits = Bits(replaces_ ? hn::AndNot(Opaque(source), seen) : seen);
            painted += static_cast<std::size_t>(std::popcount(bits));
            looked += pixels.Count();
        }
        return 4 * painted > 3 * looked;
    }

    HWY_INLINE std::size_t TakeAll(const Part& part) {
        std::size_t count = 0;
        EachVector(part, [&](const auto& pixels, const unsigned char* source, const unsigned char* target) HWY_ATTR {
            StorePixels(pixels.Load(source), source_ + count * kPackedBytes);
            StorePixels(pixels.Load(target), target_ + count * kPackedBytes);
            count += pixels.Count();
        });
        return count;
    }

    HWY_INLINE std::size_t TakeChosen(const Part& part) {
        const unsigned char* select = span_.select != nullptr ? span_.select + part.first.x : nullptr;
        std::size_t count = 0;
        std::uint16_t* live = live_;
        EachVector(part, [&](const auto& pixels, const unsigned char* from, unsigned char* onto) HWY_ATTR {
            const Pixels source = pixels.Load(from), target = pixels.Load(onto);
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
            StorePixels(Packed(source, bits), source_ + count * kPackedBytes);
            StorePixels(Packed(target, bits), target_ + count * kPackedBytes);
            count += static_cast<std::size_t>(std::popcount(bits));
        });
        return count;
    }

    HWY_INLINE void PutAllBack(const Part& part) const {
        const unsigned char* packed = target_;
        EachVector(part, [&](const auto& pixels, const unsigned char*, unsigned char* target) HWY_ATTR {
            pixels.Store(LoadPixels(packed), target);
            packed += pixels.Count() * kPackedBytes;
        });
    }

    HWY_INLINE void PutChosenBack(const Part& part) const {
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
    bool takenAll_ = false;
    CompositeSpan gathered_{};  ///< no pixels long, so that it does not pay to gather them again
    alignas(64) unsigned char source_[(kMostPixels + kMostStep) * kPackedBytes];
    alignas(64) unsigned char target_[(kMostPixels + kMostStep) * kPackedBytes];
    std::uint16_t live_[kMostPixels / 4];
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
