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

/// Whether few of the pixels at the start of a step are to be mixed: most are clear or opaque.
HWY_INLINE bool IsMostlyCopied(const unsigned char* source) {
    const Pixels alpha = hn::ShiftRight<24>(LoadPixels(source));
    const PixelMask mixed = hn::And(hn::Ne(alpha, hn::Zero(kPixels)), hn::Ne(alpha, hn::Set(kPixels, 255)));
    return 2 * hn::CountTrue(kPixels, mixed) < hn::Lanes(kPixels);
}

/// Paints steps from pixel i on by Normal at full alpha for as long as their sources or their targets are opaque, but
/// for those whose pixels may pay to be gathered.
/// @return the pixel behind them.
HWY_INLINE std::size_t PaintOnOpaque(const CompositeSpan& span, std::size_t i, std::size_t end) {
    bool isExtreme = false;
    for (; i < end; i += StepPixels()) {
        const unsigned char* const source = span.source + i * kPackedBytes;
        unsigned char* const target = span.target + i * kPackedBytes;
        const auto eachVector = [&](auto paint) {
            for (std::size_t at = 0; at < kStepVectors * VectorBytes(); at += VectorBytes()) {
                StorePixels(paint(LoadPixels(source + at), target + at), target + at);
            }
        };
        if (IsOpaque(source)) {
            eachVector([](Pixels s, const unsigned char*) { return s; });
            continue;
        }
        if (IsClear(source)) continue;  // large pictures are clear for long: their targets need not be read
        if (!IsOpaque(target)) break;
        // Steps of one kind follow each other: it is not worth while to ask at each.
        if (isExtreme || i % (4 * StepPixels()) == 0) {
            isExtreme = IsExtreme(source);
            if (isExtreme) {
                if (IsClear(source)) continue;
                eachVector([](Pixels s, const unsigned char* t) { return OverOpaque(s, LoadPixels(t)); });
                continue;
            }
            if (IsMostlyCopied(source)) break;
        }
        const Blocks<Block> block = LoadBlocks(source);
        const Blocks<Words> as = Alphas(block);
        const Blocks<Channels> cs = UnpremultipliedWhereSeen(block, as);
        const Blocks<Channels> cb = StoredChannels(LoadBlocks(target));
        ForEachBlock([&](std::size_t j) {
            const Channels result = EachChannel(cb[j], cs[j], OnOpaque{as[j]});
            StoreBlock(MakeBlock(result, Constant(255)), BlockAt(target, j));
        });
    }
    return i;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
