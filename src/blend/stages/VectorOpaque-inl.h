// Compositing where sources or targets are opaque. Included once per target.

#if defined(IMAGEOP_VECTOR_OPAQUE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_OPAQUE_INL_H
#undef IMAGEOP_VECTOR_OPAQUE_INL_H
#else
#define IMAGEOP_VECTOR_OPAQUE_INL_H
#endif

#include <cstddef>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// (B*as + cb*(255-as)) / 255: the result on an opaque backdrop.
struct OnOpaque {
    HWY_INLINE Words operator()(Words cb, Words b) const {
        return Div255(hn::Add(hn::Mul(b, as), hn::Mul(cb, hn::Sub(Constant(255), as))));
    }

    Words as;
};

/// (B*ab + cs*(255-ab)) / 255: the result of an opaque source.
struct OfOpaque {
    HWY_INLINE Words operator()(Words cs, Words b) const {
        return Div255(hn::Add(hn::Mul(b, ab), hn::Mul(cs, hn::Sub(Constant(255), ab))));
    }

    Words ab;
};

/// What Normal makes of the blocks of a step on opaque pixels, with their effective alphas.
HWY_INLINE Blocks<Block> MixedWithOpaque(const Blocks<Block>& source, const Blocks<Words>& alpha,
                                         const Blocks<Words>& effective, const unsigned char* backdrop) {
    const Blocks<Channels> cs = UnpremultipliedWhereSeen(source, alpha);
    const Blocks<Channels> cb = StoredChannels(LoadBlocks(backdrop));
    return EachBlock(
        [&](std::size_t j) { return MakeBlock(EachChannel(cb[j], cs[j], OnOpaque{effective[j]}), Constant(255)); });
}

/// Whether few of the pixels at the start of a step are to be mixed: most are clear or opaque.
HWY_INLINE bool IsMostlyCopied(const unsigned char* source) {
    const Pixels alpha = hn::ShiftRight<24>(LoadPixels(source));
    const PixelMask mixed = hn::And(hn::Ne(alpha, hn::Zero(kPixels)), hn::Ne(alpha, hn::Set(kPixels, 255)));
    return 2 * hn::CountTrue(kPixels, mixed) < hn::Lanes(kPixels);
}

/// Raises the group alphas of a step by the alphas of its source.
HWY_INLINE void RaiseGroupAlphas(const unsigned char* source, std::uint32_t* entries) {
    for (std::size_t at = 0; at < StepPixels(); at += hn::Lanes(kPixels)) {
        const Words alpha = AsWords(hn::ShiftRight<24>(LoadPixels(source + at * kPackedBytes)));
        const Words before = AsWords(hn::LoadU(kPixels, entries + at));
        hn::StoreU(AsPixels(UniteAlpha(before, alpha)), kPixels, entries + at);
    }
}

/// Paints steps from pixel i on by Normal at full alpha, without a stencil, for as long as their sources or their
/// targets are opaque, and in a group their snapshots; outside groups but for those whose pixels may pay to be
/// gathered.
/// @return the pixel behind them.
template <CompositeForm Form>
HWY_INLINE std::size_t PaintOnOpaque(const CompositeSpan& span, std::size_t i, std::size_t end) {
    constexpr bool inGroup = Form != CompositeForm::Plain;
    constexpr bool inKnockout = Form == CompositeForm::Knockout;
    bool isExtreme = false;
    for (; i < end; i += StepPixels()) {
        const unsigned char* const source = span.source + i * kPackedBytes;
        unsigned char* const target = span.target + i * kPackedBytes;
        const unsigned char* const backdrop = inKnockout ? span.snapshot + i * kPackedBytes : target;
        const auto store = [&](Pixels result, std::size_t v) {
            const std::size_t at = v * VectorBytes();
            if constexpr (inKnockout) {  // where the source is clear the group's own colour stays
                const PixelMask painted = hn::Ne(hn::ShiftRight<24>(LoadPixels(source + at)), hn::Zero(kPixels));
                result = hn::IfThenElse(painted, result, LoadPixels(target + at));
            }
            StorePixels(result, target + at);
        };
        if (inGroup && !IsOpaque(span.snapshot + i * kPackedBytes)) break;
        if (IsOpaque(source)) {
            for (std::size_t v = 0; v < kStepVectors; ++v) store(LoadPixels(source + v * VectorBytes()), v);
            if constexpr (inGroup) {
                ForEachBlock(
                    [&](std::size_t j) { StoreEntries(Constant(255), span.groupAlpha + i + j * BlockPixels()); });
            }
            continue;
        }
        // Large pictures are clear for long: outside groups their targets need not be read.
        if (!inGroup && IsClear(source)) continue;
        if (!IsOpaque(target)) break;
        if constexpr (inGroup) {
            if (IsClear(source)) continue;
            RaiseGroupAlphas(source, span.groupAlpha + i);
        }
        // Steps of one kind follow each other: it is not worth while to ask at each.
        if (isExtreme || i % (4 * StepPixels()) == 0) {
            isExtreme = IsExtreme(source);
            if (isExtreme) {
                for (std::size_t v = 0; v < kStepVectors; ++v) {
                    const std::size_t at = v * VectorBytes();
                    store(OverOpaque(LoadPixels(source + at), LoadPixels(backdrop + at)), v);
                }
                continue;
            }
            if (!inGroup && IsMostlyCopied(source)) break;
        }
        const Blocks<Block> block = LoadBlocks(source);
        const Blocks<Words> as = Alphas(block);
        const Blocks<Block> result = MixedWithOpaque(block, as, as, backdrop);
        ForEachBlock([&](std::size_t j) {
            store(FirstLanes(result[j].blueGreen, result[j].redAlpha), 2 * j);
            store(SecondLanes(result[j].blueGreen, result[j].redAlpha), 2 * j + 1);
        });
    }
    return i;
}

/// The same of a group's span of any kind.
template <CompositeForm Form>
HWY_INLINE std::size_t PaintWhileOpaqueInGroup(const CompositeSpan& span, std::size_t i, std::size_t end) {
    if (span.opacity != nullptr || span.select != nullptr || span.stencil || span.alpha != 255) return i;
    return PaintOnOpaque<Form>(span, i, end);
}

/// Paints steps from pixel i on by Normal through opacities for as long as their targets are opaque.
/// @return the pixel behind them.
HWY_INLINE std::size_t PaintOnOpaqueThroughOpacities(const CompositeSpan& span, std::size_t i, std::size_t end) {
    const Mixing mix;
    for (; i < end; i += StepPixels()) {
        const unsigned char* const source = span.source + i * kPackedBytes;
        unsigned char* const target = span.target + i * kPackedBytes;
        if (!IsOpaque(target)) break;
        const Blocks<Words> as = Opacities(span, i);
        if (AreZero(as)) continue;
        if (!IsOpaque(source)) {
            const Blocks<Block> block = LoadBlocks(source);
            const Blocks<Block> result = MixedWithOpaque(block, Alphas(block), as, target);
            ForEachBlock([&](std::size_t j) { StoreBlock(result[j], BlockAt(target, j)); });
            continue;
        }
        for (std::size_t v = 0; v < kStepVectors; ++v) {
            const std::size_t at = v * VectorBytes();
            const Words alphas = InEachByte(span.opacity + i + v * hn::Lanes(kPixels));
            StorePixels(mix(LoadPixels(source + at), LoadPixels(target + at), alphas), target + at);
        }
    }
    return i;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
