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
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Luminosities of 64 pixels. A grey's is looked up: with n = 30*R + 59*G + 11*B, n / 100 is the grey itself.
HWY_INLINE std::size_t PieceLuminosities(const unsigned char* packed, std::size_t first, const ByteLookUp& ofGrey,
                                         unsigned char* bytes, std::uint16_t* unknown) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    alignas(kPiece) unsigned char floors[kPiece], greys[kPiece], greyFloors[kPiece];
    std::size_t unknowns = 0;
    for (std::size_t i = 0; i < kPiece; i += BlockPixels()) {
        const Block block = LoadBlock(packed + i * kPackedBytes);
        const Words blue = block.Blue(), green = block.Green(), red = block.Red();
        const Words n =
            hn::Add(hn::Add(hn::Mul(red, Constant(30)), hn::Mul(green, Constant(59))), hn::Mul(blue, Constant(11)));
        // floor(n / 100) = n * 20972 / 2^21 for n up to 25,500.
        const Words floor = hn::ShiftRight<5>(hn::MulHigh(n, Constant(20972)));
        const WordMask grey = hn::And(hn::Eq(blue, green), hn::Eq(green, red));
        StoreBytes(floor, floors + i);
        StoreBytes(hn::IfThenElseZero(grey, Constant(255)), greys + i);
        const WordMask whole = hn::Eq(hn::Mul(floor, Constant(100)), n);
        EachPixelOf(hn::AndNot(grey, whole),
                    [&](std::size_t pixel) { unknown[unknowns++] = static_cast<std::uint16_t>(first + i + pixel); });
    }
    ofGrey.Read(floors, kPiece, greyFloors);
    const hn::CappedTag<std::uint8_t, kPiece> tag;
    for (std::size_t i = 0; i < kPiece; i += hn::Lanes(tag)) {
        const auto isGrey = hn::MaskFromVec(hn::Load(tag, greys + i));
        hn::StoreU(hn::IfThenElse(isGrey, hn::Load(tag, greyFloors + i), hn::Load(tag, floors + i)), tag, bytes + i);
    }
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
