// Words divided by words. Included once per target.

#if defined(IMAGEOP_VECTOR_DIVISION_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_DIVISION_INL_H
#undef IMAGEOP_VECTOR_DIVISION_INL_H
#else
#define IMAGEOP_VECTOR_DIVISION_INL_H
#endif

#include <hwy/highway.h>

#include <cstdint>

#include "blend/stages/Quotients.h"
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

#if IMAGEOP_HAS_WORD_TABLES

/// The entries of a table at words below 256: its four quarters, of which bits 6 and 7 choose one.
HWY_INLINE Words LookUp(const WordTable& table, Words index) {
    const WordMask odd = hn::TestBit(index, Constant(64));
    const WordMask upper = hn::TestBit(index, Constant(128));
    const std::uint16_t* const entries = table.data();
    return hn::IfThenElse(upper, hn::IfThenElse(odd, LookUp64(entries + 192, index), LookUp64(entries + 128, index)),
                          hn::IfThenElse(odd, LookUp64(entries + 64, index), LookUp64(entries, index)));
}

#endif

/// The factor of floor(255 * c / a) for every byte c: ceil(255 * 65536 / a), which trunc(16711935 / a) is. Anything for
/// an a of 0.
HWY_INLINE Factor UnpremultiplyFactor(Words a) {
#if IMAGEOP_HAS_WORD_TABLES
    return {LookUp(kUnpremultiplyHigh, a), LookUp(kUnpremultiplyLow, a)};
#else
    return TruncatedQuotient(16711935.0F, a);
#endif
}

/// floor(255 * c / a), not cut to 8 bits, with the factor of a.
HWY_INLINE Words Scale(Words c, const Factor& factor) {
    return hn::Add(hn::Mul(c, factor.hi), hn::MulHigh(c, factor.lo));
}

/// floor(65535 / d); of no use where d is 0.
HWY_INLINE Words Reciprocal(Words d) {
#if IMAGEOP_HAS_WORD_TABLES
    return LookUp(kReciprocal, d);
#else
    return TruncatedQuotient(65535.0F, d).lo;
#endif
}

/// floor(m / d) and m mod d, with r = Reciprocal(d): m*r / 65536 is the quotient or one less.
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

HWY_INLINE Channels Scaled(const Block& block, const Factor& factor) {
    const auto channel = [&](Words c) { return hn::And(Scale(c, factor), Constant(255)); };
    return {channel(block.Blue()), channel(block.Green()), channel(block.Red())};
}

/// The straight channels of premultiplied ones: floor(255 * c / alpha) cut to 8 bits, 0 at alpha 0.
HWY_INLINE Channels Unpremultiplied(const Block& block, Words alpha) {
    Factor factor = UnpremultiplyFactor(alpha);
#if !IMAGEOP_HAS_WORD_TABLES
    const WordMask clear = hn::Eq(alpha, hn::Zero(kWords));
    factor = {hn::IfThenZeroElse(clear, factor.hi), hn::IfThenZeroElse(clear, factor.lo)};
#endif
    return Scaled(block, factor);
}

/// The same, but any bytes at alpha 0: for colours that do not count there.
HWY_INLINE Channels UnpremultipliedWhereSeen(const Block& block, Words alpha) {
    return Scaled(block, UnpremultiplyFactor(alpha));
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
