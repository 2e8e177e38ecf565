#include "pixel/Spans.h"

#include <algorithm>

#include "pixel/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel/VectorSpans.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "pixel/SpanRows.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if IMAGEOP_HAS_VECTORS

/// Formats whose rows have no vector code of their own.
template <PixelFormat F>
struct VectorRow : ScalarRow<F> {};

/// 32-bit pixels: copied, with the alpha byte inverted where the format says so.
template <PixelFormat F>
requires(HasAlpha(F)) struct VectorRow<F> {
    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        const hn::ScalableTag<std::uint8_t> bytes;
        const hn::ScalableTag<std::uint32_t> words;
        const auto invert = hn::BitCast(bytes, hn::Set(words, FactsOf(F).inverted ? 0xFF000000U : 0U));
        std::size_t i = 0;
        for (; i + hn::Lanes(words) <= count; i += hn::Lanes(words)) {
            hn::StoreU(hn::Xor(hn::LoadU(bytes, pixels + i * 4), invert), bytes, packed + i * 4);
        }
        ScalarRow<F>::Read(pixels + i * 4, packed + i * 4, count - i);
    }

    static void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select,
                      std::size_t count) {
        if (select == nullptr) {
            Read(packed, pixels, count);  // the inversion is its own inverse
            return;
        }
        const hn::ScalableTag<std::uint32_t> words;
        const hn::Repartition<std::uint8_t, decltype(words)> bytes;
        const hn::Rebind<std::uint8_t, decltype(words)> flags;
        const auto invert = hn::Set(words, FactsOf(F).inverted ? 0xFF000000U : 0U);
        std::size_t i = 0;
        for (; i + hn::Lanes(words) <= count; i += hn::Lanes(words)) {
            const auto chosen = hn::PromoteTo(words, hn::LoadU(flags, select + i));
            const auto after = hn::Xor(hn::BitCast(words, hn::LoadU(bytes, packed + i * 4)), invert);
            const auto before = hn::BitCast(words, hn::LoadU(bytes, pixels + i * 4));
            const auto merged = hn::IfThenElse(hn::Ne(chosen, hn::Zero(words)), after, before);
            hn::StoreU(hn::BitCast(bytes, merged), bytes, pixels + i * 4);
        }
        ScalarRow<F>::Write(pixels + i * 4, packed + i * 4, select + i, count - i);
    }
};

/// 24-bit pixels: the 32-bit words they lie in are dealt out to the 16-byte blocks of a vector, four pixels to each,
/// and spread there.
template <>
struct VectorRow<PixelFormat::Bgr24> {
    static constexpr hn::ScalableTag<std::uint32_t> kWords{};
    static constexpr hn::Repartition<std::uint8_t, decltype(kWords)> kBytes{};

    /// Word i of a block comes from the vector's word 3 * (its block) + i, and back.
    static HWY_INLINE auto Dealt(hn::Vec<decltype(kWords)> v) {
        alignas(64) static constexpr std::uint32_t kFrom[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
        if constexpr (HWY_MAX_BYTES == 16) return v;
        return hn::TableLookupLanes(v, hn::IndicesFromVec(kWords, hn::Load(kWords, kFrom)));
    }
    static HWY_INLINE auto Collected(hn::Vec<decltype(kWords)> v) {
        alignas(64) static constexpr std::uint32_t kFrom[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
        alignas(64) static constexpr std::uint32_t kFrom8[8] = {0, 1, 2, 4, 5, 6, 0, 0};
        if constexpr (HWY_MAX_BYTES == 16) return v;
        return hn::TableLookupLanes(v,
                                    hn::IndicesFromVec(kWords, hn::Load(kWords, HWY_MAX_BYTES == 64 ? kFrom : kFrom8)));
    }

    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        alignas(16) static constexpr std::uint8_t kSpread[16] = {0, 1, 2, 128, 3, 4,  5,  128,
                                                                 6, 7, 8, 128, 9, 10, 11, 128};
        const auto spread = hn::LoadDup128(kBytes, kSpread);
        const auto opaque = hn::BitCast(kBytes, hn::Set(kWords, 0xFF000000U));
        const std::size_t lanes = hn::Lanes(kWords);
        const auto packedOf = [&](hn::Vec<decltype(kBytes)> v) HWY_ATTR {
            const auto dealt = hn::BitCast(kBytes, Dealt(hn::BitCast(kWords, v)));
            return hn::Or(hn::TableLookupBytesOr0(dealt, spread), opaque);
        };
        std::size_t i = 0;
        // A load reaches a third of a vector beyond the pixels that it is for.
        for (; i + lanes + (lanes + 2) / 3 <= count; i += lanes) {
            hn::StoreU(packedOf(hn::LoadU(kBytes, pixels + i * 3)), kBytes, packed + i * 4);
        }
#if HWY_MAX_BYTES == 64  // loads and stores that leave out bytes
        for (; i < count; i += lanes) {
            const std::size_t rest = std::min(lanes, count - i);
            const auto some = packedOf(hn::MaskedLoad(hn::FirstN(kBytes, rest * 3), kBytes, pixels + i * 3));
            hn::BlendedStore(some, hn::FirstN(kBytes, rest * 4), kBytes, packed + i * 4);
        }
#else
        ScalarRow<PixelFormat::Bgr24>::Read(pixels + i * 3, packed + i * 4, count - i);
#endif
    }

    static void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select,
                      std::size_t count) {
        alignas(16) static constexpr std::uint8_t kGather[16] = {0,  1,  2,  4,  5,   6,   8,   9,
                                                                 10, 12, 13, 14, 128, 128, 128, 128};
        const auto gather = hn::LoadDup128(kBytes, kGather);
        const std::size_t lanes = hn::Lanes(kWords);
        std::size_t i = 0;
        for (; select == nullptr && i + lanes <= count; i += lanes) {
            const auto three = hn::TableLookupBytesOr0(hn::LoadU(kBytes, packed + i * 4), gather);
            StoreThreeQuarters(Collected(hn::BitCast(kWords, three)), pixels + i * 3);
        }
        ScalarRow<PixelFormat::Bgr24>::Write(pixels + i * 3, packed + i * 4, select != nullptr ? select + i : nullptr,
                                             count - i);
    }

    /// Stores of exact length: a longer one would keep the next load waiting.
    static HWY_INLINE void StoreThreeQuarters(hn::Vec<decltype(kWords)> v, unsigned char* to) {
        const hn::Half<decltype(kWords)> half;
        const hn::Repartition<std::uint8_t, decltype(half)> halfBytes;
        const hn::Half<decltype(half)> quarter;
        const hn::Repartition<std::uint8_t, decltype(quarter)> quarterBytes;
        hn::StoreU(hn::BitCast(halfBytes, hn::LowerHalf(half, v)), halfBytes, to);
        hn::StoreU(hn::BitCast(quarterBytes, hn::LowerHalf(quarter, hn::UpperHalf(half, v))), quarterBytes,
                   to + 2 * hn::Lanes(kWords));
    }
};

/// 16-bit pixels in 32-bit lanes, blue and red worked on at once in the two words of a lane. `RedShift` is where the
/// red field starts.
template <PixelFormat F, int RedShift>
struct FieldRow {
    static constexpr hn::ScalableTag<std::uint32_t> kLanes{};
    static constexpr hn::Repartition<std::uint16_t, decltype(kLanes)> kWords{};
    static constexpr hn::Repartition<std::uint8_t, decltype(kLanes)> kBytes{};
    static constexpr hn::Rebind<std::uint16_t, decltype(kLanes)> kPixels{};
    static constexpr hn::Repartition<std::uint8_t, decltype(kPixels)> kPixelBytes{};

    /// v*255/31 of a 5-bit field is (v*1053) >> 7.
    static HWY_INLINE auto Expanded(hn::Vec<decltype(kWords)> v) {
        return hn::ShiftRight<7>(hn::Mul(v, hn::Set(kWords, 1053)));
    }
    /// v*31/255 is (v*249) >> 11.
    static HWY_INLINE auto Reduced(hn::Vec<decltype(kWords)> v) {
        return hn::ShiftRight<11>(hn::Mul(v, hn::Set(kWords, 249)));
    }

    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        const auto five = hn::Set(kWords, 31);
        std::size_t i = 0;
        for (; i + hn::Lanes(kLanes) <= count; i += hn::Lanes(kLanes)) {
            const auto lanes = hn::PromoteTo(kLanes, hn::BitCast(kPixels, hn::LoadU(kPixelBytes, pixels + i * 2)));
            const auto p = hn::BitCast(kWords, lanes);
            const auto red = hn::BitCast(kWords, hn::ShiftLeft<16 - RedShift>(lanes));
            const auto blueRed = Expanded(hn::And(hn::OddEven(red, p), five));
            auto green = p;  // in the low words; the high ones are 0
            if constexpr (F == PixelFormat::Rgb565) {
                // The six-bit field is scaled by 255/31 and cut to 8 bits: (p & 0x7E0) * 16847 >> 16.
                green = hn::MulHigh(hn::And(p, hn::Set(kWords, 0x7E0)), hn::Set(kWords, 16847));
            } else {
                green = Expanded(hn::And(hn::ShiftRight<5>(p), five));
            }
            const auto opaque = hn::BitCast(kWords, hn::Set(kLanes, 0xFF000000U));
            const auto all = hn::Or(hn::Or(blueRed, hn::ShiftLeft<8>(green)), opaque);
            hn::StoreU(hn::BitCast(kBytes, all), kBytes, packed + i * 4);
        }
        ScalarRow<F>::Read(pixels + i * 2, packed + i * 4, count - i);
    }

    static void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select,
                      std::size_t count) {
        const hn::Rebind<std::int32_t, decltype(kLanes)> ints;
        const hn::Rebind<std::uint8_t, decltype(kPixels)> flags;
        std::size_t i = 0;
        for (; i + hn::Lanes(kLanes) <= count; i += hn::Lanes(kLanes)) {
            const auto bytes = hn::BitCast(kWords, hn::LoadU(kBytes, packed + i * 4));
            const auto blueRed = hn::BitCast(kLanes, Reduced(hn::And(bytes, hn::Set(kWords, 255))));
            const auto green = hn::BitCast(kLanes, hn::ShiftLeft<5>(Reduced(hn::ShiftRight<8>(bytes))));
            const auto fields = hn::Or(hn::Or(blueRed, green), hn::ShiftRight<16 - RedShift>(blueRed));
            auto p = hn::DemoteTo(kPixels, hn::BitCast(ints, hn::And(fields, hn::Set(kLanes, 0xFFFF))));
            if (select != nullptr) {
                const auto chosen = hn::PromoteTo(kPixels, hn::LoadU(flags, select + i));
                const auto before = hn::BitCast(kPixels, hn::LoadU(kPixelBytes, pixels + i * 2));
                p = hn::IfThenElse(hn::Ne(chosen, hn::Zero(kPixels)), p, before);
            }
            hn::StoreU(hn::BitCast(kPixelBytes, p), kPixelBytes, pixels + i * 2);
        }
        ScalarRow<F>::Write(pixels + i * 2, packed + i * 4, select != nullptr ? select + i : nullptr, count - i);
    }
};
template <>
struct VectorRow<PixelFormat::Rgb565> : FieldRow<PixelFormat::Rgb565, 11> {};
template <>
struct VectorRow<PixelFormat::Rgb555> : FieldRow<PixelFormat::Rgb555, 10> {};

constexpr SpanCodecs kCodecs = MakeSpanCodecs<VectorRow>();
const SpanCodecs* Codecs() {
    return &kCodecs;
}

#else

const SpanCodecs* Codecs() {
    return &ScalarSpanCodecs();
}

#endif

}  // namespace
}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vantu {

HWY_EXPORT(Codecs);

const SpanCodecs& ActiveSpanCodecs() {
    return *HWY_DYNAMIC_DISPATCH(Codecs)();
}

}  // namespace vantu
#endif
