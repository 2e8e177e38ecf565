// Blocks as bytes and bits in the order of their pixels, and bytes looked up in tables. Included once per target.

#if defined(IMAGEOP_VECTOR_BYTES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_BYTES_INL_H
#undef IMAGEOP_VECTOR_BYTES_INL_H
#else
#define IMAGEOP_VECTOR_BYTES_INL_H
#endif

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/VectorNative-inl.h"
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

#if IMAGEOP_HAS_BYTE_TABLES

/// A table of 256 bytes as its quarters.
struct TableQuarters {
    explicit HWY_INLINE TableQuarters(const std::array<std::uint8_t, 256>& table)
        : first(hn::LoadU(kBytes, table.data())),
          second(hn::LoadU(kBytes, table.data() + 64)),
          third(hn::LoadU(kBytes, table.data() + 128)),
          fourth(hn::LoadU(kBytes, table.data() + 192)) {}

    Bytes first, second, third, fourth;
};

/// Indices into such tables: bits 6 and 7 choose the quarter.
class ByteIndices {
public:
    explicit HWY_INLINE ByteIndices(Bytes indices)
        : indices_(indices),
          odd_(hn::TestBit(indices, hn::Set(kBytes, 64))),
          upper_(hn::TestBit(indices, hn::Set(kBytes, 128))) {}

    /// The bytes of a table at the indices.
    [[nodiscard]] HWY_INLINE Bytes In(const TableQuarters& table) const {
        const Bytes below = hn::IfThenElse(odd_, LookUp64(table.second, indices_), LookUp64(table.first, indices_));
        const Bytes above = hn::IfThenElse(odd_, LookUp64(table.fourth, indices_), LookUp64(table.third, indices_));
        return hn::IfThenElse(upper_, above, below);
    }
    [[nodiscard]] HWY_INLINE Bytes In(const std::array<std::uint8_t, 256>& table) const {
        return In(TableQuarters(table));
    }

private:
    Bytes indices_;
    hn::Mask<TagBytes> odd_, upper_;
};

/// The words of a step's blocks, below 256, as bytes: those of the first block in the low byte of each word.
HWY_INLINE Bytes JoinBytes(const Blocks<Words>& words) {
    return hn::BitCast(kBytes, hn::Or(words[0], hn::ShiftLeft<8>(words[1])));
}

/// The words of block j of such bytes, and of 256*upper + lower of two vectors of them.
HWY_INLINE Words WordsOf(Bytes bytes, std::size_t j) {
    const Words two = hn::BitCast(kWords, bytes);
    return j == 0 ? hn::And(two, Constant(255)) : hn::ShiftRight<8>(two);
}
HWY_INLINE Words WordsOf(Bytes upper, Bytes lower, std::size_t j) {
    const Words high = hn::BitCast(kWords, upper), low = hn::BitCast(kWords, lower);
    return j == 0 ? hn::OrAnd(hn::ShiftLeft<8>(high), low, Constant(0x00FF))
                  : hn::OrAnd(hn::ShiftRight<8>(low), high, Constant(0xFF00));
}

/// Which pixel of a step such a byte belongs to, and where among them lies that of a pixel.
alignas(64) inline constexpr auto kPixelOfJoined = [] {
    std::array<std::uint8_t, 64> pixels{};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i / 4 + i / 2 % 2 * 16 + i % 2 * 32);
    }
    return pixels;
}();
alignas(64) inline constexpr auto kPlaceInJoined = [] {
    std::array<std::uint8_t, 64> places{};
    for (std::size_t i = 0; i < places.size(); ++i) places[kPixelOfJoined[i]] = static_cast<std::uint8_t>(i);
    return places;
}();

/// Such bytes from memory, one a pixel of a step, and back.
HWY_INLINE Bytes LoadJoined(const unsigned char* bytes) {
    return LookUp64(hn::LoadU(kBytes, bytes), hn::Load(kBytes, kPixelOfJoined.data()));
}
HWY_INLINE void StoreJoined(Bytes joined, unsigned char* bytes) {
    hn::StoreU(LookUp64(joined, hn::Load(kBytes, kPlaceInJoined.data())), kBytes, bytes);
}

#endif

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
