// Alphas of pixels scaled by a mask's opacities. Included once per target.

#if defined(IMAGEOP_VECTOR_SCALE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_SCALE_INL_H
#undef IMAGEOP_VECTOR_SCALE_INL_H
#else
#define IMAGEOP_VECTOR_SCALE_INL_H
#endif

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/MaskStages.h"
#include "blend/stages/VectorAlphas-inl.h"
#include "blend/stages/VectorBytes-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// (alpha * key + bias) * 257 / 65536.
HWY_INLINE Words Scaled(Words alpha, Words key, Words bias) {
    return hn::MulHigh(hn::Add(hn::Mul(alpha, key), bias), Constant(257));
}

inline void ScaleExactly(const KeyedSpan& piece, const KeyScaling& scaling, std::size_t pixel) {
    const std::uint32_t alpha = piece.source[pixel * kPackedBytes + 3];
    piece.effective[pixel] = static_cast<unsigned char>(scaling.Exactly(alpha, piece.keys[pixel]));
}

// The effective alphas of the first pixels of a piece, `count` or some more up to 64.

#if IMAGEOP_HAS_BYTE_TABLES

HWY_INLINE void ScalePiece(const KeyedSpan& piece, const KeyScaling& scaling) {
    const Bytes keys = LoadJoined(piece.keys);
    const ByteIndices indices(keys);
    const Bytes bias = indices.In(scaling.bias);
    const auto alpha = EachBlock([&](std::size_t j) HWY_ATTR { return LoadBlock(BlockAt(piece.source, j)).Alpha(); });
    const auto scaled =
        EachBlock([&](std::size_t j) HWY_ATTR { return Scaled(alpha[j], WordsOf(keys, j), WordsOf(bias, j)); });
    StoreJoined(JoinBytes(scaled), piece.effective);
    const auto rest = hn::Gt(JoinBytes(alpha), indices.In(scaling.holdsUpTo));
    for (std::uint64_t bits = Bits(rest); bits != 0; bits &= bits - 1) {
        ScaleExactly(piece, scaling, kPixelOfJoined[static_cast<std::size_t>(std::countr_zero(bits))]);
    }
}

#else

HWY_INLINE void ScalePiece(const KeyedSpan& piece, const KeyScaling& scaling) {
    unsigned char bias[PieceAlphas::kPixels], holdsUpTo[PieceAlphas::kPixels];
    ByteLookUp(scaling.bias).Read(piece.keys, PieceAlphas::kPixels, bias);
    ByteLookUp(scaling.holdsUpTo).Read(piece.keys, PieceAlphas::kPixels, holdsUpTo);
    for (std::size_t i = 0; i < piece.count; i += BlockPixels()) {
        const Words alpha = LoadBlock(piece.source + i * kPackedBytes).Alpha();
        StoreBytes(Scaled(alpha, LoadBytes(piece.keys + i), LoadBytes(bias + i)), piece.effective + i);
        EachPixelOf(hn::Gt(alpha, LoadBytes(holdsUpTo + i)),
                    [&](std::size_t pixel) { ScaleExactly(piece, scaling, i + pixel); });
    }
}

#endif

inline void ScaleAlphas(const KeyedSpan& span, const KeyScaling& scaling) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    std::size_t done = 0;
    for (; done + kPiece <= span.count; done += kPiece) {
        ScalePiece({span.keys + done, span.source + done * kPackedBytes, span.effective + done, kPiece}, scaling);
    }
    const std::size_t rest = span.count - done;
    if (rest == 0) return;
    unsigned char keys[kPiece] = {}, source[kPiece * kPackedBytes] = {}, effective[kPiece];
    std::memcpy(keys, span.keys + done, rest);
    std::memcpy(source, span.source + done * kPackedBytes, rest * kPackedBytes);
    ScalePiece({keys, source, effective, rest}, scaling);
    std::memcpy(span.effective + done, effective, rest);
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
