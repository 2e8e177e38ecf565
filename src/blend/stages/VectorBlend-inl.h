// The blend functions B(cb, cs) on vectors of words, one function object a mode. Included once per target.

#if defined(IMAGEOP_VECTOR_BLEND_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_BLEND_INL_H
#undef IMAGEOP_VECTOR_BLEND_INL_H
#else
#define IMAGEOP_VECTOR_BLEND_INL_H
#endif

#include <vantu/BlendMode.h>

#include "blend/stages/BlendLookup.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Multiply of o with 2t for t < 128, otherwise Screen with 2t-255, which is Multiply on complements: with h = 0 or
/// 255, (o & h) + (o ^ h) * (2t - h) / 255.
HWY_INLINE Words HardMix(Words t, Words o) {
    const Words h = hn::And(hn::Sub(hn::Zero(kWords), hn::ShiftRight<7>(t)), Constant(255));
    return hn::Add(hn::And(o, h), Div255(hn::Mul(hn::Xor(o, h), hn::Sub(hn::Add(t, t), h))));
}

/// B(cb, cs) of a mode, for a channel of the blocks of a step.
template <BlendMode Mode>
struct Blend {
    HWY_INLINE Blocks<Words> operator()(const Blocks<Words>& cb, const Blocks<Words>& cs) const {
        return EachBlock([&](std::size_t j) { return OfBlock(cb[j], cs[j]); });
    }

private:
    static HWY_INLINE Words OfBlock(Words cb, Words cs) {
        const Words full = Constant(255);
        if constexpr (Mode == BlendMode::Normal) return cs;
        if constexpr (Mode == BlendMode::Multiply) return Div255(hn::Mul(cs, cb));
        if constexpr (Mode == BlendMode::Screen) return hn::Add(cb, Div255(hn::Mul(hn::Sub(full, cb), cs)));
        if constexpr (Mode == BlendMode::Overlay) return HardMix(cb, cs);
        if constexpr (Mode == BlendMode::Darken) return hn::Min(cb, cs);
        if constexpr (Mode == BlendMode::Lighten) return hn::Max(cb, cs);
        if constexpr (Mode == BlendMode::HardLight) return HardMix(cs, cb);
        if constexpr (Mode == BlendMode::Difference) return hn::Sub(hn::Max(cb, cs), hn::Min(cb, cs));
        if constexpr (Mode == BlendMode::Exclusion) {
            // (255*(cb+cs) - 2*cb*cs) / 255: the terms wrap in 16 bits, the difference is at most 65,025.
            const Words product = hn::Mul(cb, cs);
            return Div255(hn::Sub(hn::Mul(full, hn::Add(cb, cs)), hn::Add(product, product)));
        }
    }
};

/// min(255, 255*cb / (255-cs)), and 255 for cs = 255.
template <>
struct Blend<BlendMode::ColorDodge> {
    HWY_INLINE Blocks<Words> operator()(const Blocks<Words>& cb, const Blocks<Words>& cs) const {
        const Words full = Constant(255);
        const auto factor = UnpremultiplyFactors(EachBlock([&](std::size_t j) { return hn::Sub(full, cs[j]); }));
        return EachBlock([&](std::size_t j) {
            return hn::IfThenElse(hn::Eq(cs[j], full), full, hn::Min(Scale(cb[j], factor[j]), full));
        });
    }
};

#if IMAGEOP_HAS_WORD_TABLES

/// The bytes of a table of 16 at words below 16; what lies above the low byte of the result is of no use.
HWY_INLINE Words LookUp16(const std::uint8_t* table, Words index) {
    const hn::Repartition<std::uint8_t, Tag16> bytes;
    return hn::BitCast(kWords, hn::TableLookupBytes(hn::LoadDup128(bytes, table), hn::BitCast(bytes, index)));
}

/// With x = 255-cb and k = floor(255*x/cs): 255 - k, one less if the division leaves a remainder or the double that
/// defines the mode rounds down at k; at least 0, and 0 for cs = 0.
template <>
struct Blend<BlendMode::ColorBurn> {
    HWY_INLINE Blocks<Words> operator()(const Blocks<Words>& cb, const Blocks<Words>& cs) const {
        const Blocks<Factor> factor = UnpremultiplyFactors(cs);
        return EachBlock([&](std::size_t j) { return OfBlock(cb[j], cs[j], factor[j]); });
    }

private:
    static HWY_INLINE Words OfBlock(Words cb, Words cs, const Factor& factor) {
        alignas(16) static constexpr std::uint8_t kBits[16] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                               1, 2, 4, 8, 16, 32, 64, 128};
        const Words full = Constant(255);
        const Words x = hn::Sub(full, cb);
        const Words k = Scale(x, factor);
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
};

template <>
struct Blend<BlendMode::SoftLight> {
    HWY_INLINE Blocks<Words> operator()(const Blocks<Words>& cb, const Blocks<Words>& cs) const {
        const Blocks<Words> above = LookUp(slopes.above, cb);
        const Blocks<Words> below = LookUp(slopes.below, cb);
        return EachBlock([&](std::size_t j) { return OfBlock(cb[j], cs[j], above[j], below[j]); });
    }

    const SoftLightSlopes& slopes = GetSoftLightSlopes();

private:
    HWY_INLINE Words OfBlock(Words cb, Words cs, Words slopeAbove, Words slopeBelow) const {
        const Words zero = hn::Zero(kWords);
        const Words twice = hn::Add(cs, cs);
        const Words above = hn::SaturatedSub(twice, Constant(255));
        const Words below = hn::SaturatedSub(Constant(255), twice);
        const Words raised = hn::Add(cb, hn::MulHigh(above, slopeAbove));

        const Words word = LookUp64(slopes.lower.data(),
                                    hn::Or(hn::And(hn::ShiftRight<2>(cb), Constant(56)), hn::ShiftRight<5>(below)));
        const Words bit = hn::And(hn::Shr(word, hn::And(hn::ShiftRight<1>(below), Constant(15))), Constant(1));
        const WordMask uneven = hn::Or(hn::Or(Is<0>(cb), Is<1>(cb)), hn::Or(Is<2>(cb), Is<3>(cb)));
        const Words step =
            hn::Add(hn::Add(hn::MulHigh(below, slopeBelow), Constant(1)), hn::IfThenElseZero(uneven, bit));
        const Words lowered = hn::Sub(cb, hn::IfThenZeroElse(hn::Eq(slopeBelow, zero), step));
        return hn::IfThenElse(hn::Ne(below, zero), lowered, raised);
    }

    template <std::size_t I>
    static HWY_INLINE WordMask Is(Words cb) {
        return hn::Eq(cb, Constant(SoftLightSlopes::kUneven[I]));
    }
};

#else  // single look-ups are faster than the same by divisions, or than a gather

using EightWords = hn::Vec<hn::Full128<std::uint16_t> >;

/// The entries of a table at the four words of `index`, as words.
HWY_INLINE hn::Vec<hn::Full128<std::uint64_t> > LookUpFour(const unsigned char* table, std::uint64_t index) {
    const hn::Full128<std::uint8_t> bytes;
    auto entries = hn::Zero(bytes);
    entries = hn::InsertLane(entries, 0, table[index & 0xFFFF]);
    entries = hn::InsertLane(entries, 2, table[index >> 16 & 0xFFFF]);
    entries = hn::InsertLane(entries, 4, table[index >> 32 & 0xFFFF]);
    entries = hn::InsertLane(entries, 6, table[index >> 48]);
    return hn::BitCast(hn::Full128<std::uint64_t>(), entries);
}

HWY_INLINE EightWords LookUpEight(const unsigned char* table, EightWords index) {
    const hn::Full128<std::uint64_t> quarters;
    const auto fours = hn::BitCast(quarters, index);
    const auto first = LookUpFour(table, hn::GetLane(fours));
    const auto second = LookUpFour(table, hn::ExtractLane(fours, 1));
    return hn::BitCast(hn::Full128<std::uint16_t>(), hn::InterleaveLower(quarters, first, second));
}

/// The same for as many words as a vector has.
template <class Tag>
HWY_INLINE hn::Vec<Tag> LookUpAll(Tag tag, const unsigned char* table, hn::Vec<Tag> index) {
    if constexpr (hn::MaxLanes(tag) == 8) {
        return LookUpEight(table, index);
    } else {
        const hn::Half<Tag> half;
        return hn::Combine(tag, LookUpAll(half, table, hn::UpperHalf(half, index)),
                           LookUpAll(half, table, hn::LowerHalf(half, index)));
    }
}

/// A mode from the table of all its values.
template <BlendMode Mode>
struct BlendByTable {
    HWY_INLINE Blocks<Words> operator()(const Blocks<Words>& cb, const Blocks<Words>& cs) const {
        return EachBlock(
            [&](std::size_t j) { return LookUpAll(kWords, table, hn::Or(hn::ShiftLeft<8>(cb[j]), cs[j])); });
    }

    const unsigned char* table = GetPairTable<Mode>().data();
};

template <>
struct Blend<BlendMode::ColorBurn> : BlendByTable<BlendMode::ColorBurn> {};
template <>
struct Blend<BlendMode::SoftLight> : BlendByTable<BlendMode::SoftLight> {};

#endif

/// One channel of the colours of a step's blocks.
HWY_INLINE Blocks<Words> ChannelOf(const Blocks<Channels>& colors, Words Channels::*channel) {
    return EachBlock([&](std::size_t j) { return colors[j].*channel; });
}

/// B(cb, cs) of each channel of the blocks of a step.
template <BlendMode Mode>
HWY_INLINE Blocks<Channels> Blended(const Blend<Mode>& blend, const Blocks<Channels>& cb, const Blocks<Channels>& cs) {
    if constexpr (Mode == BlendMode::Normal) return cs;
    const auto blue = blend(ChannelOf(cb, &Channels::blue), ChannelOf(cs, &Channels::blue));
    const auto green = blend(ChannelOf(cb, &Channels::green), ChannelOf(cs, &Channels::green));
    const auto red = blend(ChannelOf(cb, &Channels::red), ChannelOf(cs, &Channels::red));
    return EachBlock([&](std::size_t j) { return Channels{blue[j], green[j], red[j]}; });
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
