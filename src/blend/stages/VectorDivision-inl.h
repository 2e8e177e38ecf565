// Words divided by words. Included once per target.

#if defined(IMAGEOP_VECTOR_DIVISION_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_DIVISION_INL_H
#undef IMAGEOP_VECTOR_DIVISION_INL_H
#else
#define IMAGEOP_VECTOR_DIVISION_INL_H
#endif

#include <hwy/highway.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "blend/stages/Quotients.h"
#include "blend/stages/VectorBytes-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// floor(n / 255) for n up to 65,025: (n+1)*257 / 65536.
HWY_INLINE Words Div255(Words n) {
    return hn::MulHigh(hn::Add(n, Constant(1)), Constant(257));
}

/// ceil(n / 255) for n up to 65,025 + 254.
HWY_INLINE Words CeilDiv255(Words n) {
    return hn::MulHigh(hn::Add(n, Constant(255)), Constant(257));
}

/// Union of two alphas: p - p*q/255 + q.
HWY_INLINE Words UniteAlpha(Words p, Words q) {
    return hn::Add(hn::Sub(p, Div255(hn::Mul(p, q))), q);
}

/// A 32-bit fixed-point factor per word: hi + lo / 65536.
struct Factor {
    Words hi;
    Words lo;
};

/// floor(255 * c / a), not cut to 8 bits, with the factor of a.
HWY_INLINE Words Scale(Words c, const Factor& factor) {
    return hn::Add(hn::Mul(c, factor.hi), hn::MulHigh(c, factor.lo));
}

// Each of these instruction sets has, for the blocks of a step:
//   UnpremultiplyFactors  the factor of floor(255 * c / a) for every byte c: ceil(255 * 65536 / a), which
//                         trunc(16711935 / a) is
//   Reciprocals           floor(65535 / d)
// Where a or d is 0 tables give 0, divisions anything.

#if IMAGEOP_HAS_BYTE_TABLES

/// The entries of a table for each block of a step, at words below 256.
HWY_INLINE Blocks<Words> LookUp(const SplitTable& table, const Blocks<Words>& index) {
    const ByteIndices indices(JoinBytes(index));
    const Bytes low = indices.In(table.low), high = indices.In(table.high);
    return EachBlock([&](std::size_t j) { return WordsOf(high, low, j); });
}

HWY_INLINE Blocks<Factor> UnpremultiplyFactors(const Blocks<Words>& a) {
    const ByteIndices alphas(JoinBytes(a));
    const Bytes low = alphas.In(kUnpremultiplyLow.low), middle = alphas.In(kUnpremultiplyLow.high);
    const Bytes high = alphas.In(kUnpremultiplyHigh.low);
    return EachBlock([&](std::size_t j) { return Factor{WordsOf(high, j), WordsOf(middle, low, j)}; });
}

HWY_INLINE Blocks<Words> Reciprocals(const Blocks<Words>& d) {
    return LookUp(kReciprocal, d);
}

#elif IMAGEOP_HAS_WORD_TABLES

/// The entries of a table at words below 256: its four quarters, of which bits 6 and 7 choose one.
HWY_INLINE Blocks<Words> LookUp(const SplitTable& table, const Blocks<Words>& index) {
    const WordMask odd = hn::TestBit(index[0], Constant(64));
    const WordMask upper = hn::TestBit(index[0], Constant(128));
    const auto quarter = [&](std::size_t i) { return LookUp64(table.words.data() + 64 * i, index[0]); };
    return {hn::IfThenElse(upper, hn::IfThenElse(odd, quarter(3), quarter(2)),
                           hn::IfThenElse(odd, quarter(1), quarter(0)))};
}

HWY_INLINE Blocks<Factor> UnpremultiplyFactors(const Blocks<Words>& a) {
    return {Factor{LookUp(kUnpremultiplyHigh, a)[0], LookUp(kUnpremultiplyLow, a)[0]}};
}

HWY_INLINE Blocks<Words> Reciprocals(const Blocks<Words>& d) {
    return LookUp(kReciprocal, d);
}

#else

/// trunc(numerator / d) per word, as for d = 1 where d is 0. The division is correctly rounded, and a quotient that is
/// no integer is at least 1/255 away from one, further than half a unit in the last place below 2^24: so the truncation
/// is exact.
HWY_INLINE Factor TruncatedQuotient(float numerator, Words d) {
    const TagFloat floats;
    const TagInt ints;
    const auto divide = [&](Pixels lanes) {
        return Truncated(hn::Div(hn::Set(floats, numerator), hn::ConvertTo(floats, hn::BitCast(ints, lanes))));
    };
    const Words divisor = hn::Max(d, Constant(1));
    const Pixels first = divide(hn::And(AsPixels(divisor), hn::Set(kPixels, 0xFFFF)));
    const Pixels second = divide(hn::ShiftRight<16>(AsPixels(divisor)));
    return {HighHalves(first, second), LowHalves(first, second)};
}

HWY_INLINE Blocks<Factor> UnpremultiplyFactors(const Blocks<Words>& a) {
    return {TruncatedQuotient(16711935.0F, a[0])};
}

HWY_INLINE Blocks<Words> Reciprocals(const Blocks<Words>& d) {
    return {TruncatedQuotient(65535.0F, d[0]).lo};
}

#endif

/// floor(m / d) and m mod d, with r = floor(65535 / d): m*r / 65536 is the quotient or one less.
struct Division {
    HWY_INLINE Division(Words m, Words d, Words r)
        : estimate(hn::MulHigh(m, r)), rest(hn::Sub(m, hn::Mul(estimate, d))) {
        remainder = hn::Min(rest, hn::Sub(rest, d));  // rest - d wraps to a large value where rest is below d
    }
    [[nodiscard]] HWY_INLINE Words Quotient() const {
        return hn::Sub(estimate, hn::VecFromMask(kWords, hn::Ne(rest, remainder)));
    }

    Words estimate;
    Words rest;
    Words remainder;
};

/// Channels times a factor, not cut to 8 bits.
HWY_INLINE Channels Scaled(const Block& block, const Factor& factor) {
    return {Scale(block.Blue(), factor), Scale(block.Green(), factor), Scale(block.Red(), factor)};
}

/// The low bytes of channels.
HWY_INLINE Channels LowBytes(const Channels& c) {
    const Words full = Constant(255);
    return {hn::And(c.blue, full), hn::And(c.green, full), hn::And(c.red, full)};
}

/// The straight channels of premultiplied ones: floor(255 * c / alpha) cut to 8 bits, but any bytes at alpha 0, for
/// colours that do not count there.
HWY_INLINE Blocks<Channels> UnpremultipliedWhereSeen(const Blocks<Block>& block, const Blocks<Words>& alpha) {
    const Blocks<Factor> factor = UnpremultiplyFactors(alpha);
    return EachBlock([&](std::size_t j) { return LowBytes(Scaled(block[j], factor[j])); });
}

/// The same, but 0 at alpha 0.
HWY_INLINE Blocks<Channels> Unpremultiplied(const Blocks<Block>& block, const Blocks<Words>& alpha) {
    const Blocks<Factor> factor = UnpremultiplyFactors(alpha);
    return EachBlock([&](std::size_t j) {
#if IMAGEOP_HAS_WORD_TABLES
        return LowBytes(Scaled(block[j], factor[j]));
#else
        const WordMask clear = hn::Eq(alpha[j], hn::Zero(kWords));
        return LowBytes(
            Scaled(block[j], {hn::IfThenZeroElse(clear, factor[j].hi), hn::IfThenZeroElse(clear, factor[j].lo)}));
#endif
    });
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
