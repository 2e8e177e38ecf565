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

/// A span with many pixels that stay as they are, outside groups and without opacities. Those that need painting are
/// gathered, painted and put back.
template <typename Stage>
class GatheredPixels;

template <BlendMode Mode, PackedColors Colors>
class GatheredPixels<PlainStage<Mode, Colors>> {
public:
    static constexpr std::size_t kMostPixels = 1024;

    explicit GatheredPixels(const CompositeSpan& span) : span_(span), gathered_(span) {
        gathered_.count = 0;  // nothing to be gathered again
        gathered_.source = source_;
        gathered_.target = target_;
        gathered_.select = nullptr;
    }

    /// Paints `count` pixels, whole vectors.
    /// @return how many needed painting.
    std::size_t Paint(std::size_t first, std::size_t count, const Blend<Mode>& blend) {
        const std::size_t gathered = Gather(first, count);
        if (gathered == 0) return 0;
        // What fills up the last step is transparent.
        std::memset(source_ + gathered * kPackedBytes, 0, StepPixels() * kPackedBytes);
        std::memset(target_ + gathered * kPackedBytes, 0, StepPixels() * kPackedBytes);
        PaintSteps<PlainStage<Mode, Colors>>(gathered_, 0, gathered, blend);
        PutBack(first, count);
        return gathered;
    }

private:
    /// Collects the pixels that need painting. Where Normal at full alpha replaces pixels it does so at once.
    std::size_t Gather(std::size_t first, std::size_t count) {
        const Pixels opaque = hn::Set(kPixels, 0xFF000000);
        const unsigned char* const HWY_RESTRICT select = span_.select != nullptr ? span_.select + first : nullptr;
        const unsigned char* HWY_RESTRICT from = span_.source + first * kPackedBytes;
        unsigned char* HWY_RESTRICT onto = span_.target + first * kPackedBytes;
        const bool replaces = Mode == BlendMode::Normal && span_.alpha == 255;
        std::size_t gathered = 0;
        for (std::size_t i = 0, v = 0; i < count; i += hn::Lanes(kPixels), ++v) {
            const Pixels source = LoadPixels(from + i * kPackedBytes);
            const Pixels target = LoadPixels(onto + i * kPackedBytes);
            const Pixels alpha = hn::And(source, opaque);
            PixelMask live = hn::Ne(alpha, hn::Zero(kPixels));
            if (select != nullptr) {
                const Pixels selected = hn::PromoteTo(kPixels, hn::LoadU(TagByte(), select + i));
                live = hn::And(live, hn::Ne(selected, hn::Zero(kPixels)));
            }
            if (replaces) {
                const PixelMask replaced = hn::And(live, hn::Eq(alpha, opaque));
                StorePixels(hn::IfThenElse(replaced, source, target), onto + i * kPackedBytes);
                live = hn::AndNot(replaced, live);
            }
            const unsigned int bits = Bits(live);
            live_[v] = static_cast<std::uint16_t>(bits);
            StorePixels(Packed(source, bits), source_ + gathered * kPackedBytes);
            StorePixels(Packed(target, bits), target_ + gathered * kPackedBytes);
            gathered += static_cast<std::size_t>(std::popcount(bits));
        }
        return gathered;
    }

    void PutBack(std::size_t first, std::size_t count) const {
        const unsigned char* from = target_;
        const unsigned char* source = span_.source + first * kPackedBytes;
        unsigned char* HWY_RESTRICT onto = span_.target + first * kPackedBytes;
        // Painting what was gathered leaves memory idle: the pixels after the next ones are asked for already here.
        const std::size_t ahead = std::min(2 * count, span_.count - first - count) * kPackedBytes;
        const std::size_t step = hn::Lanes(kPixels) * kPackedBytes;
        for (std::size_t v = 0; v < count / hn::Lanes(kPixels); ++v, source += step, onto += step) {
            hwy::Prefetch(source + ahead);
            hwy::Prefetch(onto + ahead);
            // No branch leaves out vectors without a pixel to paint: where their pattern is new to the processor, wrong
            // guesses cost more than the work.
            const unsigned int bits = live_[v];
            StorePixels(Unpacked(LoadPixels(from), bits, LoadPixels(onto)), onto);
            from += kPackedBytes * static_cast<std::size_t>(std::popcount(bits));
        }
    }

    static constexpr std::size_t kMostStep = kBlocks * HWY_MAX_BYTES / 2;

    const CompositeSpan& span_;
    CompositeSpan gathered_;
    alignas(64) unsigned char source_[(kMostPixels + kMostStep) * kPackedBytes];
    alignas(64) unsigned char target_[(kMostPixels + kMostStep) * kPackedBytes];
    std::uint16_t live_[kMostPixels / 4];
};

/// Paints pixels of a span while few of them need it.
/// @return the pixel to go on with.
template <typename Stage, BlendMode Mode>
HWY_NOINLINE std::size_t PaintGathered(const CompositeSpan& span, std::size_t first, std::size_t end,
                                       const Blend<Mode>& blend) {
    GatheredPixels<Stage> gathered(span);
    while (first < end) {
        const std::size_t count = std::min(gathered.kMostPixels, end - first);
        const std::size_t painted = gathered.Paint(first, count, blend);
        first += count;
        if (painted > count - count / 4) break;
    }
    return first;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
