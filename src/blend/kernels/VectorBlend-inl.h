// The blend functions B(cb, cs) on vectors of words. Included once per target.

#if defined(IMAGEOP_VECTOR_BLEND_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_BLEND_INL_H
#undef IMAGEOP_VECTOR_BLEND_INL_H
#else
#define IMAGEOP_VECTOR_BLEND_INL_H
#endif

#include <vantu/BlendMode.h>

#include "blend/kernels/BlendTables.h"
#include "blend/kernels/VectorWords-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Multiply of o with 2t for t < 128, otherwise Screen with 2t-255, which is Multiply on complements: with h = 0 or
/// 255, (o & h) + (o ^ h) * (2t - h) / 255.
HWY_INLINE Words HardMix(Words t, Words o) {
    const Words h = hn::And(hn::Sub(hn::Zero(kWords), hn::ShiftRight<7>(t)), Constant(255));
    return hn::Add(hn::And(o, h), Div255(hn::Mul(hn::Xor(o, h), hn::Sub(hn::Add(t, t), h))));
}

/// min(255, 255*cb / (255-cs)), and 255 for cs = 255.
HWY_INLINE Words ColorDodge(Words cb, Words cs) {
    const Words quotient = Scale(cb, UnpremultiplyFactor(hn::Sub(Constant(255), cs)));
    return hn::IfThenElse(hn::Eq(cs, Constant(255)), cs, hn::Min(quotient, Constant(255)));
}

/// The entry of a table of bytes at 256*cb + cs.
HWY_INLINE Words LookUp(const BlendTable& table, Words cb, Words cs) {
    const Words index = hn::Or(hn::ShiftLeft<8>(cb), cs);
    const auto gather = [&](Pixels lanes) {
        const auto* const base = reinterpret_cast<const std::uint32_t*>(table.bytes.data());
        return hn::GatherOffset(kPixels, base, hn::BitCast(TagInt(), lanes));
    };
    const Words zero = hn::Zero(kWords);
    const Words entries = LowHalves(gather(FirstLanes(index, zero)), gather(SecondLanes(index, zero)));
    return hn::And(entries, Constant(255));
}

/// B(cb, cs) of a mode; `table` is that of the mode if it has one.
template <BlendMode Mode>
HWY_INLINE Words Blend(Words cb, Words cs, const BlendTable* table) {
    const Words full = Constant(255);
    if constexpr (Mode == BlendMode::Normal) return cs;
    if constexpr (Mode == BlendMode::Multiply) return Div255(hn::Mul(cs, cb));
    if constexpr (Mode == BlendMode::Screen) return hn::Add(cb, Div255(hn::Mul(hn::Sub(full, cb), cs)));
    if constexpr (Mode == BlendMode::Overlay) return HardMix(cb, cs);
    if constexpr (Mode == BlendMode::Darken) return hn::Min(cb, cs);
    if constexpr (Mode == BlendMode::Lighten) return hn::Max(cb, cs);
    if constexpr (Mode == BlendMode::ColorDodge) return ColorDodge(cb, cs);
    if constexpr (HasBlendTable(Mode)) return LookUp(*table, cb, cs);
    if constexpr (Mode == BlendMode::HardLight) return HardMix(cs, cb);
    if constexpr (Mode == BlendMode::Difference) return hn::Sub(hn::Max(cb, cs), hn::Min(cb, cs));
    if constexpr (Mode == BlendMode::Exclusion) {
        // (255*(cb+cs) - 2*cb*cs) / 255: the terms wrap in 16 bits, the difference is at most 65,025.
        const Words product = hn::Mul(cb, cs);
        return Div255(hn::Sub(hn::Mul(full, hn::Add(cb, cs)), hn::Add(product, product)));
    }
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
