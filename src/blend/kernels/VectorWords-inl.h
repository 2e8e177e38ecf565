// Pixels in vectors of 16-bit words, for any instruction set. Included once per target.

#if defined(IMAGEOP_VECTOR_WORDS_INL_H) == defined(HWY_TARGET_TOGGLE)
#undef IMAGEOP_HAS_WORD_TABLES
#ifdef IMAGEOP_VECTOR_WORDS_INL_H
#undef IMAGEOP_VECTOR_WORDS_INL_H
#else
#define IMAGEOP_VECTOR_WORDS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "blend/kernels/WordTables.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Tag16 = hn::ScalableTag<std::uint16_t>;
using Tag32 = hn::ScalableTag<std::uint32_t>;
using TagFloat = hn::ScalableTag<float>;
using TagInt = hn::ScalableTag<std::int32_t>;
using TagByte = hn::Rebind<std::uint8_t, Tag32>;

/// A vector of words: one value for each pixel of a block, or a mask of them.
using Words = hn::Vec<Tag16>;
using Pixels = hn::Vec<Tag32>;
using WordMask = hn::Mask<Tag16>;

constexpr Tag16 kWords;
constexpr Tag32 kPixels;

/// Pixels of a block: two vectors of packed pixels. Word 2i belongs to pixel i of the first, word 2i+1 to pixel i of
/// the second, so that words are made from pixels by blends and shifts alone.
inline std::size_t BlockPixels() {
    return hn::Lanes(kWords);
}

HWY_INLINE Words AsWords(Pixels v) {
    return hn::BitCast(kWords, v);
}
HWY_INLINE Pixels AsPixels(Words v) {
    return hn::BitCast(kPixels, v);
}
HWY_INLINE Words Constant(unsigned int value) {
    return hn::Set(kWords, static_cast<std::uint16_t>(value));
}
HWY_INLINE bool All(WordMask mask) {
    return hn::AllTrue(kWords, mask);
}

/// The words of the low halves of two vectors of 32-bit lanes, and of their high halves.
HWY_INLINE Words LowHalves(Pixels first, Pixels second) {
    return hn::OddEven(AsWords(hn::ShiftLeft<16>(second)), AsWords(first));
}
HWY_INLINE Words HighHalves(Pixels first, Pixels second) {
    return hn::OddEven(AsWords(second), AsWords(hn::ShiftRight<16>(first)));
}

/// The 32-bit lanes that two vectors of words came from.
HWY_INLINE Pixels FirstLanes(Words low, Words high) {
    return AsPixels(hn::OddEven(AsWords(hn::ShiftLeft<16>(AsPixels(high))), low));
}
HWY_INLINE Pixels SecondLanes(Words low, Words high) {
    return AsPixels(hn::OddEven(high, AsWords(hn::ShiftRight<16>(AsPixels(low)))));
}

/// A block of packed pixels: words of blue + 256 * green and of red + 256 * alpha.
struct Block {
    Words blueGreen;
    Words redAlpha;

    HWY_INLINE Words Blue() const { return hn::And(blueGreen, Constant(255)); }
    HWY_INLINE Words Green() const { return hn::ShiftRight<8>(blueGreen); }
    HWY_INLINE Words Red() const { return hn::And(redAlpha, Constant(255)); }
    HWY_INLINE Words Alpha() const { return hn::ShiftRight<8>(redAlpha); }
};

HWY_INLINE Block LoadBlock(const unsigned char* packed) {
    const auto load = [](const unsigned char* p) {
        const hn::Repartition<std::uint8_t, Tag32> bytes;
        return hn::BitCast(kPixels, hn::LoadU(bytes, p));
    };
    const Pixels first = load(packed);
    const Pixels second = load(packed + 4 * hn::Lanes(kPixels));
    return {LowHalves(first, second), HighHalves(first, second)};
}

HWY_INLINE void StoreBlock(const Block& block, unsigned char* packed) {
    const auto store = [](Pixels v, unsigned char* p) {
        const hn::Repartition<std::uint8_t, Tag32> bytes;
        hn::StoreU(hn::BitCast(bytes, v), bytes, p);
    };
    store(FirstLanes(block.blueGreen, block.redAlpha), packed);
    store(SecondLanes(block.blueGreen, block.redAlpha), packed + 4 * hn::Lanes(kPixels));
}

/// One byte per pixel of a block.
HWY_INLINE Words LoadBytes(const unsigned char* bytes) {
    const TagByte tag;
    const Pixels first = hn::PromoteTo(kPixels, hn::LoadU(tag, bytes));
    const Pixels second = hn::PromoteTo(kPixels, hn::LoadU(tag, bytes + hn::Lanes(kPixels)));
    return LowHalves(first, second);
}

/// One 32-bit entry of at most 16 bits per pixel of a block.
HWY_INLINE Words LoadEntries(const std::uint32_t* entries) {
    return LowHalves(hn::LoadU(kPixels, entries), hn::LoadU(kPixels, entries + hn::Lanes(kPixels)));
}
HWY_INLINE void StoreEntries(Words words, std::uint32_t* entries) {
    const Words zero = hn::Zero(kWords);
    hn::StoreU(FirstLanes(words, zero), kPixels, entries);
    hn::StoreU(SecondLanes(words, zero), kPixels, entries + hn::Lanes(kPixels));
}

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
        const auto quotient = hn::Div(hn::Set(floats, numerator), hn::ConvertTo(floats, hn::BitCast(ints, lanes)));
        return hn::BitCast(kPixels, hn::ConvertTo(ints, quotient));
    };
    const Words divisor = hn::Max(d, Constant(1));
    const Pixels first = divide(hn::And(AsPixels(divisor), hn::Set(kPixels, 0xFFFF)));
    const Pixels second = divide(hn::ShiftRight<16>(AsPixels(divisor)));
    return {HighHalves(first, second), LowHalves(first, second)};
}

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL  // the latter where the whole build is for it
#define IMAGEOP_HAS_WORD_TABLES 1

/// The entries of a table of 64 at words below 64.
HWY_INLINE Words LookUp64(const std::uint16_t* table, Words index) {
    return Words{_mm512_permutex2var_epi16(_mm512_load_si512(table), index.raw, _mm512_load_si512(table + 32))};
}

/// The entries of a table at words below 256: its four quarters, of which bits 6 and 7 choose one.
HWY_INLINE Words LookUp(const WordTable& table, Words index) {
    const WordMask odd = hn::TestBit(index, Constant(64));
    const WordMask upper = hn::TestBit(index, Constant(128));
    const std::uint16_t* const entries = table.data();
    return hn::IfThenElse(upper, hn::IfThenElse(odd, LookUp64(entries + 192, index), LookUp64(entries + 128, index)),
                          hn::IfThenElse(odd, LookUp64(entries + 64, index), LookUp64(entries, index)));
}
#else
#define IMAGEOP_HAS_WORD_TABLES 0
#endif

/// The factor of floor(255 * c / a) for every byte c: ceil(255 * 65536 / a), which trunc(16711935 / a) is. Of no use
/// where a is 0.
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

/// The three colour channels of a block, straight.
struct Channels {
    Words blue;
    Words green;
    Words red;
};

HWY_INLINE Channels StoredChannels(const Block& block) {
    return {block.Blue(), block.Green(), block.Red()};
}

/// The straight channels of premultiplied ones: floor(255 * c / alpha) cut to 8 bits, 0 at alpha 0.
HWY_INLINE Channels Unpremultiplied(const Block& block, Words alpha) {
    const Factor factor = UnpremultiplyFactor(alpha);
    const Words low = hn::IfThenZeroElse(hn::Eq(alpha, hn::Zero(kWords)), Constant(255));
    const auto channel = [&](Words c) { return hn::And(Scale(c, factor), low); };
    return {channel(block.Blue()), channel(block.Green()), channel(block.Red())};
}

/// A block of three channels and an alpha, each below 256.
HWY_INLINE Block MakeBlock(const Channels& c, Words alpha) {
    return {hn::Or(c.blue, hn::ShiftLeft<8>(c.green)), hn::Or(c.red, hn::ShiftLeft<8>(alpha))};
}

/// `formula(cb, cs)` on each channel of two colours.
template <typename Formula>
HWY_INLINE Channels EachChannel(const Channels& cb, const Channels& cs, Formula formula) {
    return {formula(cb.blue, cs.blue), formula(cb.green, cs.green), formula(cb.red, cs.red)};
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
