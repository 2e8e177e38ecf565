// Pixels in vectors of 16-bit words, for any instruction set. Included once per target.

#if defined(IMAGEOP_VECTOR_PIXELS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_PIXELS_INL_H
#undef IMAGEOP_VECTOR_PIXELS_INL_H
#else
#define IMAGEOP_VECTOR_PIXELS_INL_H
#endif

#include <hwy/highway.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel/Spans.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Tag16 = hn::ScalableTag<std::uint16_t>;
using Tag32 = hn::ScalableTag<std::uint32_t>;
using TagFloat = hn::ScalableTag<float>;
using TagInt = hn::ScalableTag<std::int32_t>;
using TagByte = hn::Rebind<std::uint8_t, Tag32>;  ///< a byte a pixel
using TagPixelBytes = hn::Repartition<std::uint8_t, Tag32>;

/// A vector of words: one value for each pixel of a block, or a mask of them.
using Words = hn::Vec<Tag16>;
using Pixels = hn::Vec<Tag32>;
using WordMask = hn::Mask<Tag16>;
using PixelMask = hn::Mask<Tag32>;

constexpr Tag16 kWords;
constexpr Tag32 kPixels;
constexpr TagPixelBytes kPixelBytes;

/// Pixels of a block: two vectors of packed pixels. Word 2i belongs to pixel i of the first, word 2i+1 to pixel i of
/// the second, so that words are made from pixels by blends and shifts alone.
inline std::size_t BlockPixels() {
    return hn::Lanes(kWords);
}

/// Blocks that are painted in one step. Where bytes are looked up in tables these are two: a look-up of the words of
/// one block, which are below 256, takes those of another in their high bytes for nothing.
constexpr std::size_t kBlocks = IMAGEOP_HAS_BYTE_TABLES ? 2 : 1;

template <typename T>
using Blocks = std::array<T, kBlocks>;

inline std::size_t StepPixels() {
    return kBlocks * BlockPixels();
}

/// `make(j)` for each block of a step.
template <typename Make>
HWY_INLINE auto EachBlock(Make make) {
    if constexpr (kBlocks == 2) {
        return std::array{make(std::size_t{0}), make(std::size_t{1})};
    } else {
        return std::array{make(std::size_t{0})};
    }
}

/// Calls `paint(j)` for each block of a step.
template <typename Paint>
HWY_INLINE void ForEachBlock(Paint paint) {
    paint(std::size_t{0});
    if constexpr (kBlocks == 2) paint(std::size_t{1});
}

/// Whether `test(j)` holds for each block of a step.
template <typename Test>
HWY_INLINE bool EveryBlock(Test test) {
    if constexpr (kBlocks == 2) return test(std::size_t{0}) && test(std::size_t{1});
    return test(std::size_t{0});
}

/// The words, or the masks, of the blocks of a step joined by "and", and by "or".
template <typename T>
HWY_INLINE T AndOfBlocks(const Blocks<T>& v) {
    if constexpr (kBlocks == 2) return hn::And(v[0], v[1]);
    return v[0];
}
template <typename T>
HWY_INLINE T OrOfBlocks(const Blocks<T>& v) {
    if constexpr (kBlocks == 2) return hn::Or(v[0], v[1]);
    return v[0];
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

HWY_INLINE Pixels LoadPixels(const unsigned char* packed) {
    return hn::BitCast(kPixels, hn::LoadU(kPixelBytes, packed));
}
HWY_INLINE void StorePixels(Pixels v, unsigned char* packed) {
    hn::StoreU(hn::BitCast(kPixelBytes, v), kPixelBytes, packed);
}

HWY_INLINE Block LoadBlock(const unsigned char* packed) {
    const Pixels first = LoadPixels(packed);
    const Pixels second = LoadPixels(packed + kPackedBytes * hn::Lanes(kPixels));
    return {LowHalves(first, second), HighHalves(first, second)};
}
/// The packed pixels of block j of a step.
template <typename Byte>
HWY_INLINE Byte* BlockAt(Byte* packed, std::size_t j) {
    return packed + j * BlockPixels() * kPackedBytes;
}
HWY_INLINE Blocks<Block> LoadBlocks(const unsigned char* packed) {
    return EachBlock([&](std::size_t j) { return LoadBlock(BlockAt(packed, j)); });
}
HWY_INLINE Blocks<Words> Alphas(const Blocks<Block>& block) {
    return EachBlock([&](std::size_t j) { return block[j].Alpha(); });
}
HWY_INLINE void StoreBlock(const Block& block, unsigned char* packed) {
    StorePixels(FirstLanes(block.blueGreen, block.redAlpha), packed);
    StorePixels(SecondLanes(block.blueGreen, block.redAlpha), packed + kPackedBytes * hn::Lanes(kPixels));
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

/// The three colour channels of a block, straight.
struct Channels {
    Words blue;
    Words green;
    Words red;
};

HWY_INLINE Channels StoredChannels(const Block& block) {
    return {block.Blue(), block.Green(), block.Red()};
}
HWY_INLINE Blocks<Channels> StoredChannels(const Blocks<Block>& block) {
    return EachBlock([&](std::size_t j) { return StoredChannels(block[j]); });
}

/// A block of three channels and an alpha, each below 256.
HWY_INLINE Block MakeBlock(const Channels& c, Words alpha) {
    return {hn::Or(c.blue, hn::ShiftLeft<8>(c.green)), hn::Or(c.red, hn::ShiftLeft<8>(alpha))};
}

/// `formula` on each channel of two or three colours.
template <typename Formula>
HWY_INLINE Channels EachChannel(const Channels& x, const Channels& y, Formula formula) {
    return {formula(x.blue, y.blue), formula(x.green, y.green), formula(x.red, y.red)};
}
template <typename Formula>
HWY_INLINE Channels EachChannel(const Channels& x, const Channels& y, const Channels& z, Formula formula) {
    return {formula(x.blue, y.blue, z.blue), formula(x.green, y.green, z.green), formula(x.red, y.red, z.red)};
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
