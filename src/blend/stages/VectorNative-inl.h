// What the vector library has no operation for, or a slower one: the only place with what one processor's compiler
// understands. Included once per target.

#if defined(IMAGEOP_VECTOR_NATIVE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_NATIVE_INL_H
#undef IMAGEOP_VECTOR_NATIVE_INL_H
#else
#define IMAGEOP_VECTOR_NATIVE_INL_H
#endif

#include <hwy/highway.h>

#include <array>
#include <cstdint>

#include "blend/stages/LaneOrders.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Floats truncated to integers that they are within the range of: without the care that hn::ConvertTo takes of others.
HWY_INLINE Pixels Truncated(hn::Vec<TagFloat> v) {
#if HWY_ARCH_X86 && HWY_MAX_BYTES == 16
    return Pixels{_mm_cvttps_epi32(v.raw)};
#elif HWY_ARCH_X86 && HWY_MAX_BYTES == 32
    return Pixels{_mm256_cvttps_epi32(v.raw)};
#else
    return hn::BitCast(kPixels, hn::ConvertTo(TagInt(), v));
#endif
}

#if IMAGEOP_HAS_PAIR_SUMS

/// The sums of the products of two neighbouring bytes, of which the first factors are unsigned and the second signed,
/// as far as these sums fit a signed word.
HWY_INLINE Words PairSums(Words factors, Words signedFactors) {
#if HWY_MAX_BYTES == 16
    return Words{_mm_maddubs_epi16(factors.raw, signedFactors.raw)};
#elif HWY_MAX_BYTES == 32
    return Words{_mm256_maddubs_epi16(factors.raw, signedFactors.raw)};
#else
    return Words{_mm512_maddubs_epi16(factors.raw, signedFactors.raw)};
#endif
}

#endif

/// The bits of a mask, the first pixel's lowest.
HWY_INLINE unsigned int Bits(PixelMask mask) {
#if IMAGEOP_HAS_WORD_TABLES
    return mask.raw;
#else
    std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(kPixels, mask, bytes);
    return bytes[0];
#endif
}

#if IMAGEOP_HAS_BYTE_TABLES

using TagBytes = hn::ScalableTag<std::uint8_t>;
using Bytes = hn::Vec<TagBytes>;

constexpr TagBytes kBytes;

/// The bytes of a table of 64 at the low 6 bits of others.
HWY_INLINE Bytes LookUp64(Bytes table, Bytes index) {
    return Bytes{_mm512_permutexvar_epi8(index.raw, table.raw)};
}

/// The bits of a mask, the first byte's lowest.
HWY_INLINE std::uint64_t Bits(hn::Mask<TagBytes> mask) {
    return mask.raw;
}

#endif

#if IMAGEOP_HAS_WORD_TABLES

/// The entries of a table of 64 at words below 64.
HWY_INLINE Words LookUp64(const std::uint16_t* table, Words index) {
    return Words{_mm512_permutex2var_epi16(_mm512_load_si512(table), index.raw, _mm512_load_si512(table + 32))};
}

/// The pixels whose bits are set, in order, ahead of the others.
HWY_INLINE Pixels Packed(Pixels v, unsigned int bits) {
    return Pixels{_mm512_maskz_compress_epi32(static_cast<__mmask16>(bits), v.raw)};
}

/// Packed pixels back in the places whose bits are set.
HWY_INLINE Pixels Unpacked(Pixels packed, unsigned int bits) {
    return Pixels{_mm512_maskz_expand_epi32(static_cast<__mmask16>(bits), packed.raw)};
}

/// The mask of bits.
HWY_INLINE PixelMask MaskOf(unsigned int bits) {
    return PixelMask{static_cast<__mmask16>(bits)};
}

#else  // up to 8 lanes, by tables: much faster than hn::Compress

HWY_INLINE Pixels Ordered(Pixels v, const std::array<std::uint8_t, 8>& order) {
    static_assert(HWY_MAX_BYTES <= 32);
    const Pixels lanes = hn::PromoteTo(kPixels, hn::LoadU(TagByte(), order.data()));
    return hn::TableLookupLanes(v, hn::IndicesFromVec(kPixels, lanes));
}
HWY_INLINE Pixels Packed(Pixels v, unsigned int bits) {
    return Ordered(v, kPackLanes[bits]);
}
HWY_INLINE Pixels Unpacked(Pixels packed, unsigned int bits) {
    return Ordered(packed, kUnpackLanes[bits]);
}
HWY_INLINE PixelMask MaskOf(unsigned int bits) {
    const std::uint8_t byte[8] = {static_cast<std::uint8_t>(bits)};
    return hn::LoadMaskBits(kPixels, byte);
}

#endif

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
