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
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// The effective alphas of a block by the bytes of its factors.
HWY_INLINE void ScaleBlock(const unsigned char* source, const unsigned char* low, const unsigned char* high,
                           const KeyFactors& factors, unsigned char* effective) {
    const TagByte bytes;
    const std::size_t half = hn::Lanes(kPixels);
    const Words zero = hn::Zero(kWords);
    const Words sa = LoadBlock(source).Alpha();
    const Words factor = hn::Or(LoadBytes(low), hn::ShiftLeft<8>(LoadBytes(high)));
    const WordMask whole = hn::Eq(factor, Constant(KeyFactors::kWhole));
    const Words as = hn::IfThenElse(whole, sa, hn::MulHigh(sa, factor));
    hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(TagInt(), FirstLanes(as, zero))), bytes, effective);
    hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(TagInt(), SecondLanes(as, zero))), bytes, effective + half);

    const WordMask uneven = hn::Ne(hn::SaturatedSub(factor, Constant(KeyFactors::kWhole)), zero);
    if (hn::AllFalse(kWords, uneven)) return;
    std::uint8_t memory[8] = {};
    hn::StoreMaskBits(kWords, uneven, memory);
    std::uint32_t bits = 0;
    std::memcpy(&bits, memory, sizeof bits);
    for (; bits != 0; bits &= bits - 1) {
        // Word 2n is pixel n of the block's first vector, word 2n+1 that of its second.
        const auto word = static_cast<std::size_t>(std::countr_zero(bits));
        const std::size_t i = word / 2 + word % 2 * half;
        effective[i] = factors.uneven[low[i] - (KeyFactors::kUneven & 255U)][source[i * kPackedBytes + 3]];
    }
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
