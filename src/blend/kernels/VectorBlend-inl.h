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

/// The bytes of a table of 16 at words below 16; what lies above the low byte of the result is of no use.
HWY_INLINE Words LookUp16(const std::uint8_t* table, Words index) {
    const hn::Repartition<std::uint8_t, Tag16> bytes;
    return hn::BitCast(kWords, hn::TableLookupBytes(hn::LoadDup128(bytes, table), hn::BitCast(bytes, index)));
}

/// With x = 255-cb and k = floor(255*x/cs): 255 - k, one less if the division leaves a remainder or the double that
/// defines the mode rounds down at k; at least 0, and 0 for cs = 0.
HWY_INLINE Words ColorBurn(Words cb, Words cs) {
    alignas(16) static constexpr std::uint8_t kBits[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const Words full = Constant(255);
    const Words x = hn::Sub(full, cb);
    const Words k = Scale(x, UnpremultiplyFactor(cs));
    const Words remainder = hn::Sub(hn::Mul(full, x), hn::Mul(k, cs));
    const Words byteIndex = hn::And(hn::ShiftRight<3>(k), Constant(15));
    const Words byte = hn::IfThenElse(hn::TestBit(k, Constant(128)), LookUp16(kRoundsDown.data() + 16, byteIndex),
                                      LookUp16(kRoundsDown.data(), byteIndex));
    const Words bit = LookUp16(kBits, hn::And(k, Constant(15)));
    const Words roundsDown = hn::And(hn::And(byte, bit), full);
    const Words less = hn::Min(hn::Or(remainder, roundsDown), Constant(1));
    const Words burnt = hn::SaturatedSub(full, hn::Add(k, less));
    return hn::IfThenZeroElse(hn::Eq(cs, Constant(0)), burnt);
}

/// SoftLight from the table of all its values.
HWY_INLINE Words LookUpSoftLight(const SoftLightTable& table, Words cb, Words cs) {
    const Words index = hn::Or(hn::ShiftLeft<8>(cb), cs);
    const auto gather = [&](Pixels lanes) {
        const auto* const base = reinterpret_cast<const std::uint32_t*>(table.bytes.data());
        return hn::GatherOffset(kPixels, base, hn::BitCast(TagInt(), lanes));
    };
    const Words zero = hn::Zero(kWords);
    const Words entries = LowHalves(gather(FirstLanes(index, zero)), gather(SecondLanes(index, zero)));
    return hn::And(entries, Constant(255));
}

/// SoftLight by slopes where tables of words are at hand, else by a gather.
HWY_INLINE Words SoftLight(const SoftLightTable& table, Words cb, Words cs) {
#if IMAGEOP_HAS_WORD_TABLES
    const Words zero = hn::Zero(kWords);
    const Words twice = hn::Add(cs, cs);
    const Words above = hn::SaturatedSub(twice, Constant(255));
    const Words below = hn::SaturatedSub(Constant(255), twice);
    const Words raised = hn::Add(cb, hn::MulHigh(above, LookUp(table.above, cb)));

    const Words slope = LookUp(table.below, cb);
    const Words word =
        LookUp64(table.lower.data(), hn::Or(hn::And(hn::ShiftRight<2>(cb), Constant(56)), hn::ShiftRight<5>(below)));
    const Words bit = hn::And(hn::Shr(word, hn::And(hn::ShiftRight<1>(below), Constant(15))), Constant(1));
    const auto is = [&](std::size_t i) { return hn::Eq(cb, Constant(SoftLightTable::kUneven[i])); };
    const WordMask uneven = hn::Or(hn::Or(is(0), is(1)), hn::Or(is(2), is(3)));
    const Words step = hn::Add(hn::Add(hn::MulHigh(below, slope), Constant(1)), hn::IfThenElseZero(uneven, bit));
    const Words lowered = hn::Sub(cb, hn::IfThenZeroElse(hn::Eq(slope, zero), step));
    return hn::IfThenElse(hn::Ne(below, zero), lowered, raised);
#else
    return LookUpSoftLight(table, cb, cs);
#endif
}

/// B(cb, cs) of a mode.
template <BlendMode Mode>
HWY_INLINE Words Blend(Words cb, Words cs, const SoftLightTable* table) {
    const Words full = Constant(255);
    if constexpr (Mode == BlendMode::Normal) return cs;
    if constexpr (Mode == BlendMode::Multiply) return Div255(hn::Mul(cs, cb));
    if constexpr (Mode == BlendMode::Screen) return hn::Add(cb, Div255(hn::Mul(hn::Sub(full, cb), cs)));
    if constexpr (Mode == BlendMode::Overlay) return HardMix(cb, cs);
    if constexpr (Mode == BlendMode::Darken) return hn::Min(cb, cs);
    if constexpr (Mode == BlendMode::Lighten) return hn::Max(cb, cs);
    if constexpr (Mode == BlendMode::ColorDodge) return ColorDodge(cb, cs);
    if constexpr (Mode == BlendMode::ColorBurn) return ColorBurn(cb, cs);
    if constexpr (Mode == BlendMode::SoftLight) return SoftLight(*table, cb, cs);
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
