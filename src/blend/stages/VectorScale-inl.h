// Alphas of pixels scaled by a mask's opacities. Included once per target.

#if defined(IMAGEOP_VECTOR_SCALE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_SCALE_INL_H
#undef IMAGEOP_VECTOR_SCALE_INL_H
#else
#define IMAGEOP_VECTOR_SCALE_INL_H
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

/// The effective alphas of a block by the bytes of its factors.
HWY_INLINE void ScaleBlock(const unsigned char* source, const unsigned char* low, const unsigned char* high,
                           const KeyFactors& factors, unsigned char* effective) {
    const Words sa = LoadBlock(source).Alpha();
    const Words factor = hn::Or(LoadBytes(low), hn::ShiftLeft<8>(LoadBytes(high)));
    const WordMask whole = hn::Eq(factor, Constant(KeyFactors::kWhole));
    StoreBytes(hn::IfThenElse(whole, sa, hn::MulHigh(sa, factor)), effective);
    const Words above = hn::SaturatedSub(factor, Constant(KeyFactors::kWhole));
    EachPixelOf(hn::Ne(above, hn::Zero(kWords)), [&](std::size_t i) {
        effective[i] = factors.uneven[low[i] - (KeyFactors::kUneven & 255U)][source[i * kPackedBytes + 3]];
    });
}

inline void ScaleAlphas(const KeyedSpan& span, const KeyFactors& factors) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    alignas(kPiece) unsigned char low[kPiece], high[kPiece];
    const ByteLookUp lowOf(factors.low), highOf(factors.high);
    const auto scale = [&](const unsigned char* source, std::size_t count, unsigned char* effective) HWY_ATTR {
        for (std::size_t i = 0; i < count; i += BlockPixels()) {
            ScaleBlock(source + i * kPackedBytes, low + i, high + i, factors, effective + i);
        }
    };
    std::size_t done = 0;
    for (; done + kPiece <= span.count; done += kPiece) {
        lowOf.Read(span.keys + done, kPiece, low);
        highOf.Read(span.keys + done, kPiece, high);
        scale(span.source + done * kPackedBytes, kPiece, span.effective + done);
    }
    const std::size_t rest = span.count - done;
    if (rest == 0) return;
    lowOf.Read(span.keys + done, rest, low);
    highOf.Read(span.keys + done, rest, high);
    unsigned char source[kPiece * kPackedBytes] = {}, effective[kPiece];
    std::memcpy(source, span.source + done * kPackedBytes, rest * kPackedBytes);
    scale(source, rest, effective);
    std::memcpy(span.effective + done, effective, rest);
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
