// Opaque pixels mixed into opaque ones by an alpha a pixel. Included once per target.

#if defined(IMAGEOP_VECTOR_MIX_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_MIX_INL_H
#undef IMAGEOP_VECTOR_MIX_INL_H
#else
#define IMAGEOP_VECTOR_MIX_INL_H
#endif

#include <cstddef>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// (s*a + t*(255-a)) / 255 of each byte of pixels, with an alpha a pixel. In a high byte floor(n / 255) is
/// (m + m/256) / 256 with m = n + 1.
HWY_INLINE Pixels Mixed(Pixels source, Pixels target, const unsigned char* alphas) {
    const Pixels alpha = hn::PromoteTo(kPixels, hn::LoadU(TagByte(), alphas));
    const Words low = Constant(0x00FF);
    const Words high = Constant(0xFF00);
    const Words s = AsWords(source);
    const Words t = AsWords(target);
    const Words a = AsWords(hn::Or(alpha, hn::ShiftLeft<16>(alpha)));
    const Words rest = hn::Sub(low, a);
    const Words even = Div255(hn::Add(hn::Mul(hn::And(s, low), a), hn::Mul(hn::And(t, low), rest)));
    const Words n = hn::Add(hn::Mul(hn::ShiftRight<8>(s), a), hn::Mul(hn::ShiftRight<8>(t), rest));
    const Words m = hn::Add(n, Constant(1));
    return AsPixels(hn::OrAnd(even, hn::Add(m, hn::ShiftRight<8>(m)), high));
}

HWY_INLINE bool AllOpaque(Pixels v) {
    const Pixels opaque = hn::Set(kPixels, 0xFF000000);
    return hn::AllTrue(kPixels, hn::Eq(hn::And(v, opaque), opaque));
}

/// Paints a block through opacities where that leaves or mixes bytes: a target that is opaque stays as it is where all
/// opacities are 0, and is mixed with an opaque source in Normal. @return whether the block is painted.
template <BlendMode Mode>
HWY_INLINE bool PaintOpaqueThroughOpacities(const CompositeSpan& span, std::size_t i) {
    const std::size_t half = kPackedBytes * hn::Lanes(kPixels);
    unsigned char* const target = span.target + i * kPackedBytes;
    const Pixels t0 = LoadPixels(target), t1 = LoadPixels(target + half);
    if (!AllOpaque(hn::And(t0, t1))) return false;
    const unsigned char* const opacity = span.opacity + i;
    if (All(hn::Eq(LoadBytes(opacity), hn::Zero(kWords)))) return true;
    const unsigned char* const source = span.source + i * kPackedBytes;
    if (Mode != BlendMode::Normal) return false;
    const Pixels s0 = LoadPixels(source), s1 = LoadPixels(source + half);
    if (!AllOpaque(hn::And(s0, s1))) return false;
    StorePixels(Mixed(s0, t0, opacity), target);
    StorePixels(Mixed(s1, t1, opacity + hn::Lanes(kPixels)), target + half);
    return true;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
