// Alphas of pixels scaled by a mask's opacities. Included once per target.

#if defined(IMAGEOP_VECTOR_SCALE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_SCALE_INL_H
#undef IMAGEOP_VECTOR_SCALE_INL_H
#else
#define IMAGEOP_VECTOR_SCALE_INL_H
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/MaskStages.h"
#include "blend/stages/VectorAlphas-inl.h"
#include "blend/stages/VectorBytes-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// The factors of 64 pixels.
class PieceFactors {
public:
#if IMAGEOP_HAS_BYTE_TABLES

    explicit HWY_INLINE PieceFactors(const KeyFactors& factors) : lowOf_(factors.low), highOf_(factors.high) {}

    HWY_INLINE void Read(const unsigned char* keys) {
        lowOf_.Read(keys, PieceAlphas::kPixels, low_);
        highOf_.Read(keys, PieceAlphas::kPixels, high_);
    }
    /// Those of the block that starts with a pixel.
    [[nodiscard]] HWY_INLINE Words OfBlock(std::size_t pixel) const {
        return hn::Or(LoadBytes(low_ + pixel), hn::ShiftLeft<8>(LoadBytes(high_ + pixel)));
    }

private:
    ByteLookUp lowOf_, highOf_;
    alignas(64) unsigned char low_[PieceAlphas::kPixels], high_[PieceAlphas::kPixels];

#else

    explicit PieceFactors(const KeyFactors& factors) : factors_(factors.words) {}

    void Read(const unsigned char* keys) {
        const std::size_t half = hn::Lanes(kPixels);
        for (std::size_t i = 0; i < PieceAlphas::kPixels; i += 4) {
            // Four words of a block, whose pixels are two neighbours in each of its vectors.
            const unsigned char* const first = keys + i / BlockPixels() * BlockPixels() + i % BlockPixels() / 2;
            const std::uint64_t a = factors_[first[0]], b = factors_[first[half]];
            const std::uint64_t c = factors_[first[1]], d = factors_[first[half + 1]];
            const std::uint64_t four = a | b << 16 | c << 32 | d << 48;
            std::memcpy(words_ + i, &four, sizeof four);
        }
    }
    [[nodiscard]] HWY_INLINE Words OfBlock(std::size_t pixel) const {
        return hn::LoadU(kWords, words_ + pixel);
    }

private:
    const std::array<std::uint16_t, 256>& factors_;
    std::uint16_t words_[PieceAlphas::kPixels];

#endif
};

/// The effective alphas of the first pixels of a piece, `count` or some more up to 64.
HWY_INLINE void ScalePiece(const KeyedSpan& piece, const KeyFactors& factors, PieceFactors& factorsOf) {
    factorsOf.Read(piece.keys);
    for (std::size_t i = 0; i < piece.count; i += BlockPixels()) {
        const Words sa = LoadBlock(piece.source + i * kPackedBytes).Alpha();
        const Words factor = factorsOf.OfBlock(i);
        const WordMask whole = hn::Eq(factor, Constant(KeyFactors::kWhole));
        StoreBytes(hn::IfThenElse(whole, sa, hn::MulHigh(sa, factor)), piece.effective + i);
        const Words above = hn::SaturatedSub(factor, Constant(KeyFactors::kWhole));
        EachPixelOf(hn::Ne(above, hn::Zero(kWords)), [&](std::size_t pixel) {
            const std::size_t p = i + pixel;
            const std::size_t table = factors.words[piece.keys[p]] - std::size_t{KeyFactors::kUneven};
            piece.effective[p] = factors.uneven[table][piece.source[p * kPackedBytes + 3]];
        });
    }
}

inline void ScaleAlphas(const KeyedSpan& span, const KeyFactors& factors) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    PieceFactors factorsOf(factors);
    std::size_t done = 0;
    for (; done + kPiece <= span.count; done += kPiece) {
        ScalePiece({span.keys + done, span.source + done * kPackedBytes, span.effective + done, kPiece}, factors,
                   factorsOf);
    }
    const std::size_t rest = span.count - done;
    if (rest == 0) return;
    unsigned char keys[kPiece] = {}, source[kPiece * kPackedBytes] = {}, effective[kPiece];
    std::memcpy(keys, span.keys + done, rest);
    std::memcpy(source, span.source + done * kPackedBytes, rest * kPackedBytes);
    ScalePiece({keys, source, effective, rest}, factors, factorsOf);
    std::memcpy(span.effective + done, effective, rest);
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
