// Luminosities of colours. Included once per target.

#if defined(IMAGEOP_VECTOR_LUMINOSITY_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_LUMINOSITY_INL_H
#undef IMAGEOP_VECTOR_LUMINOSITY_INL_H
#else
#define IMAGEOP_VECTOR_LUMINOSITY_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/MaskStages.h"
#include "blend/stages/VectorAlphas-inl.h"
#include "blend/stages/VectorBytes-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// 11*B + 59*G + 30*R of the pixels of a block, given as its two vectors.
HWY_INLINE Words WeightedSums(Pixels first, Pixels second) {
#if IMAGEOP_HAS_PAIR_SUMS
    const Words weights = AsWords(hn::Set(kPixels, 11 | 59 << 8 | 30 << 16));
    const Pixels a = AsPixels(PairSums(AsWords(first), weights)), b = AsPixels(PairSums(AsWords(second), weights));
    return hn::Add(LowHalves(a, b), HighHalves(a, b));
#else
    const Block block{LowHalves(first, second), HighHalves(first, second)};
    const Words blueGreen = hn::Add(hn::Mul(block.Blue(), Constant(11)), hn::Mul(block.Green(), Constant(59)));
    return hn::Add(blueGreen, hn::Mul(block.Red(), Constant(30)));
#endif
}

/// What luminosities of the pixels of a block are made of: with n = 11*B + 59*G + 30*R, floor(n / 100), which is a grey
/// itself, and which pixels are greys.
struct BlockLuminosities {
    /// @param each called as `each(i)` for pixels that are no grey and of which n / 100 is a whole number.
    template <typename Each>
    HWY_INLINE BlockLuminosities(const unsigned char* packed, Each each) {
        const Pixels first = LoadPixels(packed), second = LoadPixels(packed + kPackedBytes * hn::Lanes(kPixels));
        const auto distances = [](Pixels v) HWY_ATTR { return hn::Xor(v, hn::ShiftRight<8>(v)); };
        const Words n = WeightedSums(first, second);
        // floor(n / 100) = n * 20972 / 2^21 for n up to 25,500.
        floor = hn::ShiftRight<5>(hn::MulHigh(n, Constant(20972)));
        grey = hn::Eq(LowHalves(distances(first), distances(second)), hn::Zero(kWords));
        EachPixelOf(hn::AndNot(grey, hn::Eq(hn::Mul(floor, Constant(100)), n)), each);
    }

    Words floor;
    WordMask grey;
};

/// Luminosities of 64 pixels, those of greys looked up.
HWY_INLINE std::size_t PieceLuminosities(const unsigned char* packed, std::size_t first, const ByteLookUp& ofGrey,
                                         unsigned char* bytes, std::uint16_t* unknown) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    std::size_t unknowns = 0;
    const auto block = [&](std::size_t i) HWY_ATTR {
        return BlockLuminosities(packed + i * kPackedBytes, [&](std::size_t pixel) {
            unknown[unknowns++] = static_cast<std::uint16_t>(first + i + pixel);
        });
    };
#if IMAGEOP_HAS_BYTE_TABLES
    const BlockLuminosities low = block(0), high = block(kPiece / 2);
    const Bytes floors = JoinBytes({low.floor, high.floor});
    const Words greys =
        hn::Or(hn::IfThenElseZero(low.grey, Constant(0x00FF)), hn::IfThenElseZero(high.grey, Constant(0xFF00)));
    const auto grey = hn::MaskFromVec(hn::BitCast(kBytes, greys));
    StoreJoined(hn::IfThenElse(grey, ofGrey.Of(floors), floors), bytes);
#else
    alignas(kPiece) unsigned char floors[kPiece], greys[kPiece], greyFloors[kPiece];
    for (std::size_t i = 0; i < kPiece; i += BlockPixels()) {
        const BlockLuminosities luminosities = block(i);
        StoreBytes(luminosities.floor, floors + i);
        StoreBytes(hn::IfThenElseZero(luminosities.grey, Constant(255)), greys + i);
    }
    ofGrey.Read(floors, kPiece, greyFloors);
    const hn::CappedTag<std::uint8_t, kPiece> tag;
    for (std::size_t i = 0; i < kPiece; i += hn::Lanes(tag)) {
        const auto isGrey = hn::MaskFromVec(hn::Load(tag, greys + i));
        hn::StoreU(hn::IfThenElse(isGrey, hn::Load(tag, greyFloors + i), hn::Load(tag, floors + i)), tag, bytes + i);
    }
#endif
    return unknowns;
}

inline std::size_t Luminosities(const unsigned char* packed, std::size_t count, const ByteTable& ofGrey,
                                unsigned char* bytes, std::uint16_t* unknown) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    const ByteLookUp lookUp(ofGrey);
    std::size_t unknowns = 0, done = 0;
    for (; done + kPiece <= count; done += kPiece) {
        unknowns += PieceLuminosities(packed + done * kPackedBytes, done, lookUp, bytes + done, unknown + unknowns);
    }
    if (done == count) return unknowns;
    // What fills up the last piece is black.
    unsigned char rest[kPiece * kPackedBytes] = {}, restBytes[kPiece];
    std::memcpy(rest, packed + done * kPackedBytes, (count - done) * kPackedBytes);
    unknowns += PieceLuminosities(rest, done, lookUp, restBytes, unknown + unknowns);
    std::memcpy(bytes + done, restBytes, count - done);
    return unknowns;
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
