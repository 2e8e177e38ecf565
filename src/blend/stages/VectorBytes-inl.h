// Blocks as bytes and bits in the order of their pixels. Included once per target.

#if defined(IMAGEOP_VECTOR_BYTES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_BYTES_INL_H
#undef IMAGEOP_VECTOR_BYTES_INL_H
#else
#define IMAGEOP_VECTOR_BYTES_INL_H
#endif

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Stores a word below 256 of each pixel of a block as a byte.
HWY_INLINE void StoreBytes(Words words, unsigned char* bytes) {
    const TagByte tag;
    const Words zero = hn::Zero(kWords);
    hn::StoreU(hn::U8FromU32(FirstLanes(words, zero)), tag, bytes);
    hn::StoreU(hn::U8FromU32(SecondLanes(words, zero)), tag, bytes + hn::Lanes(kPixels));
}

/// Calls `each(i)` for every pixel of a block whose word is in the mask. Word 2n is pixel n of the block's first
/// vector, word 2n+1 that of its second.
template <typename Each>
HWY_INLINE void EachPixelOf(WordMask mask, Each each) {
    if (hn::AllFalse(kWords, mask)) return;
    std::uint8_t memory[8] = {};
    hn::StoreMaskBits(kWords, mask, memory);
    std::uint32_t bits = 0;
    std::memcpy(&bits, memory, sizeof bits);
    for (; bits != 0; bits &= bits - 1) {
        const auto word = static_cast<std::size_t>(std::countr_zero(bits));
        each(word / 2 + word % 2 * hn::Lanes(kPixels));
    }
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
