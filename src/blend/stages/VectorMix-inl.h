// Pixels painted byte by byte on opaque ones. Included once per target.

#if defined(IMAGEOP_VECTOR_MIX_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_MIX_INL_H
#undef IMAGEOP_VECTOR_MIX_INL_H
#else
#define IMAGEOP_VECTOR_MIX_INL_H
#endif

#include <cstddef>
#include <cstdint>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// A word in every lane that the compiler does not know: one that it knows it would make again wherever it is used.
HWY_INLINE Words Kept(unsigned int value) {
    const volatile auto word = static_cast<std::uint16_t>(value);
    return hn::Set(kWords, word);
}

#if IMAGEOP_HAS_PAIR_SUMS

/// Mixes pixels by alphas that lie in all bytes of their pixels: (s*a + t*(255-a)) / 255 of each byte.
///
/// With n = s*a + t*(255-a), (s-128)*a + (t-128)*(255-a) is n - 255*128, and floor(n / 255) is 257*(n+1) / 65536.
class Mixing {
public:
    HWY_INLINE Mixing()
        : high_(Kept(0xFF00)),
          signs_(Kept(0x8080)),
          bias_(Kept(255 * 128 + 1)),
          factor_(Kept(257)),
          odd_(hn::MaskFromVec(hn::BitCast(kPixelBytes, Constant(0xFF00)))),
          even_(hn::MaskFromVec(hn::BitCast(kPixelBytes, Constant(0x00FF)))) {}

    HWY_INLINE Pixels operator()(Pixels source, Pixels target, Words alphas) const {
        const Words weights = hn::Xor(alphas, high_);  // a in the low and 255-a in the high byte of each word
        const Words s = hn::Xor(AsWords(source), signs_);
        const Words t = hn::Xor(AsWords(target), signs_);
        const Words even = Quotients(PairSums(weights, SwappedWhere(odd_, t, s)));
        const Words odd = Quotients(PairSums(weights, SwappedWhere(even_, s, t)));
        return AsPixels(SwappedWhere(odd_, odd, even));
    }

private:
    HWY_INLINE Words Quotients(Words sums) const { return hn::MulHigh(hn::Add(sums, bias_), factor_); }

    /// Where the mask has a byte, the other byte of its word in `v`; elsewhere that of `other`.
    static HWY_INLINE Words SwappedWhere(hn::Mask<TagPixelBytes> mask, Words v, Words other) {
        alignas(16) static constexpr std::uint8_t kPlaces[16] = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
        const auto swapped = hn::TableLookupBytes(hn::BitCast(kPixelBytes, v), hn::LoadDup128(kPixelBytes, kPlaces));
        return hn::BitCast(kWords, hn::IfThenElse(mask, swapped, hn::BitCast(kPixelBytes, other)));
    }

    Words high_, signs_, bias_, factor_;
    hn::Mask<TagPixelBytes> odd_, even_;
};

#else

/// Mixes pixels by alphas that lie in all bytes of their pixels: (s*a + t*(255-a)) / 255 of each byte. In a high byte
/// floor(n / 255) is (m + m/256) / 256 with m = n + 1.
class Mixing {
public:
    HWY_INLINE Pixels operator()(Pixels source, Pixels target, Words alphas) const {
        const Words low = Constant(0x00FF);
        const Words high = Constant(0xFF00);
        const Words s = AsWords(source);
        const Words t = AsWords(target);
        const Words a = hn::And(alphas, low);
        const Words rest = hn::Sub(low, a);
        const Words even = Div255(hn::Add(hn::Mul(hn::And(s, low), a), hn::Mul(hn::And(t, low), rest)));
        const Words n = hn::Add(hn::Mul(hn::ShiftRight<8>(s), a), hn::Mul(hn::ShiftRight<8>(t), rest));
        const Words m = hn::Add(n, Constant(1));
        return AsPixels(hn::OrAnd(even, hn::Add(m, hn::ShiftRight<8>(m)), high));
    }
};

#endif

/// An alpha for each pixel of a vector, in all bytes of the pixel.
HWY_INLINE Words InEachByte(const unsigned char* alphas) {
    alignas(16) static constexpr std::uint8_t kPlaces[16] = {0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12};
    const Pixels pixels = hn::PromoteTo(kPixels, hn::LoadU(TagByte(), alphas));
    const auto bytes = hn::TableLookupBytes(hn::BitCast(kPixelBytes, pixels), hn::LoadDup128(kPixelBytes, kPlaces));
    return hn::BitCast(kWords, bytes);
}

HWY_INLINE bool AllOpaque(Pixels v) {
    return hn::AllTrue(kPixels, hn::Gt(v, hn::Set(kPixels, 0xFEFFFFFF)));
}

/// Vectors of pixels of a step, and their bytes.
constexpr std::size_t kStepVectors = 2 * kBlocks;
inline std::size_t VectorBytes() {
    return kPackedBytes * hn::Lanes(kPixels);
}

/// Whether all pixels of a step are opaque.
HWY_INLINE bool IsOpaque(const unsigned char* packed) {
    Pixels all = LoadPixels(packed);
    for (std::size_t v = 1; v < kStepVectors; ++v) all = hn::And(all, LoadPixels(packed + v * VectorBytes()));
    return AllOpaque(all);
}

/// Paints steps from pixel i on at a constant alpha below 255 for as long as all their pixels, of source and target,
/// are opaque: then Normal mixes every byte, the alpha's too. @return the pixel behind them.
HWY_INLINE std::size_t PaintOpaqueBytes(const CompositeSpan& span, std::size_t i, std::size_t end) {
    const Mixing mix;
    const Words alpha = Constant(span.alpha * 0x0101);
    for (; i < end; i += StepPixels()) {
        const unsigned char* const source = span.source + i * kPackedBytes;
        unsigned char* const target = span.target + i * kPackedBytes;
        if (!IsOpaque(source) || !IsOpaque(target)) break;
        for (std::size_t at = 0; at < kStepVectors * VectorBytes(); at += VectorBytes()) {
            StorePixels(mix(LoadPixels(source + at), LoadPixels(target + at), alpha), target + at);
        }
    }
    return i;
}

/// Whether all bytes of the pixels of a step are 0.
HWY_INLINE bool IsClear(const unsigned char* packed) {
    Pixels any = LoadPixels(packed);
    for (std::size_t v = 1; v < kStepVectors; ++v) any = hn::Or(any, LoadPixels(packed + v * VectorBytes()));
    return hn::AllTrue(kPixels, hn::Eq(any, hn::Zero(kPixels)));
}

/// The alphas of pixels in all of their bytes.
HWY_INLINE Pixels AlphaInEachByte(Pixels v) {
    alignas(16) static constexpr std::uint8_t kPlaces[16] = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};
    return hn::BitCast(kPixels,
                       hn::TableLookupBytes(hn::BitCast(kPixelBytes, v), hn::LoadDup128(kPixelBytes, kPlaces)));
}

/// Whether every channel of the pixels of a step is 0 or its pixel's alpha a, which stand for 0 and 255 without a
/// division: those of shadows, and of all else in black, white or a primary colour. min(c, a - c) is 0 there; a
/// difference below 0 wraps.
HWY_INLINE bool IsExtreme(const unsigned char* packed) {
    return EveryBlock([&](std::size_t j) {
        const hn::Repartition<std::uint8_t, Tag32> bytes;
        const auto distance = [&](std::size_t v) {
            const Pixels pixels = LoadPixels(BlockAt(packed, j) + v * VectorBytes());
            const auto channels = hn::BitCast(bytes, pixels);
            return hn::Min(channels, hn::Sub(hn::BitCast(bytes, AlphaInEachByte(pixels)), channels));
        };
        return hn::AllTrue(bytes, hn::Eq(hn::Or(distance(0), distance(1)), hn::Zero(bytes)));
    });
}

/// s + t*(255-a) / 255 of each byte, with the alphas a of the source: Normal of such pixels on opaque ones, as their
/// straight channels times a are 255*s. In a high byte floor(n / 255) is (m + m/256) / 256 with m = n + 1.
HWY_INLINE Pixels OverOpaque(Pixels source, Pixels target) {
    const hn::Repartition<std::uint8_t, Tag32> bytes;
    const Words low = Constant(0x00FF);
    const Words t = AsWords(target);
    const Words rest = hn::AndNot(AsWords(AlphaInEachByte(source)), low);
    const Words even = Div255(hn::Mul(hn::And(t, low), rest));
    const Words m = hn::Add(hn::Mul(hn::ShiftRight<8>(t), rest), Constant(1));
    const Words seen = hn::OrAnd(even, hn::Add(m, hn::ShiftRight<8>(m)), Constant(0xFF00));
    return hn::BitCast(kPixels, hn::Add(hn::BitCast(bytes, source), hn::BitCast(bytes, seen)));
}

/// The opacities of the blocks of a step, from pixel i of a span on.
HWY_INLINE Blocks<Words> Opacities(const CompositeSpan& span, std::size_t i) {
    return EachBlock([&](std::size_t j) { return LoadBytes(span.opacity + i + j * BlockPixels()); });
}

HWY_INLINE bool AreZero(const Blocks<Words>& words) {
    return All(hn::Eq(OrOfBlocks(words), hn::Zero(kWords)));
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
