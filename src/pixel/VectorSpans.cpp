#include "pixel/Spans.h"

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

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

/// Formats whose rows have no vector code of their own.
template <PixelFormat F>
struct VectorRow : ScalarRow<F> {};

/// 32-bit pixels: copied, with the alpha byte inverted where the format says so.
template <PixelFormat F>
struct WordRow {
    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        const hn::ScalableTag<std::uint8_t> bytes;
        const hn::ScalableTag<std::uint32_t> words;
        const auto invert = hn::BitCast(bytes, hn::Set(words, F == PixelFormat::Bgra32Inverted ? 0xFF000000U : 0U));
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
        const auto invert = hn::Set(words, F == PixelFormat::Bgra32Inverted ? 0xFF000000U : 0U);
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
template <>
struct VectorRow<PixelFormat::Bgra32Premultiplied> : WordRow<PixelFormat::Bgra32Premultiplied> {};
template <>
struct VectorRow<PixelFormat::Bgra32Inverted> : WordRow<PixelFormat::Bgra32Inverted> {};
template <>
struct VectorRow<PixelFormat::Bgra32> : WordRow<PixelFormat::Bgra32> {};

/// 24-bit pixels, four to a vector of 16 bytes.
template <>
struct VectorRow<PixelFormat::Bgr24> {
    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        alignas(16) static constexpr std::uint8_t kSpread[16] = {0, 1, 2, 128, 3, 4,  5,  128,
                                                                 6, 7, 8, 128, 9, 10, 11, 128};
        const hn::FixedTag<std::uint8_t, 16> bytes;
        const hn::FixedTag<std::uint32_t, 4> words;
        const auto spread = hn::Load(bytes, kSpread);
        const auto opaque = hn::BitCast(bytes, hn::Set(words, 0xFF000000U));
        std::size_t i = 0;
        // A load of 16 bytes reaches into the sixth pixel.
        for (; i + 6 <= count; i += 4) {
            const auto four = hn::TableLookupBytesOr0(hn::LoadU(bytes, pixels + i * 3), spread);
            hn::StoreU(hn::Or(four, opaque), bytes, packed + i * 4);
        }
        ScalarRow<PixelFormat::Bgr24>::Read(pixels + i * 3, packed + i * 4, count - i);
    }

    static void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select,
                      std::size_t count) {
        alignas(16) static constexpr std::uint8_t kGather[16] = {0,  1,  2,  4,  5,   6,   8,   9,
                                                                 10, 12, 13, 14, 128, 128, 128, 128};
        const hn::FixedTag<std::uint8_t, 16> bytes;
        const auto gather = hn::Load(bytes, kGather);
        std::size_t i = 0;
        // Sixteen pixels make three whole vectors: stores of exact length, none that the next load would wait for.
        for (; select == nullptr && i + 16 <= count; i += 16) {
            const auto four = [&](std::size_t first) {
                return hn::TableLookupBytesOr0(hn::LoadU(bytes, packed + (i + first) * 4), gather);
            };
            const auto p0 = four(0), p1 = four(4), p2 = four(8), p3 = four(12);
            unsigned char* const to = pixels + i * 3;
            hn::StoreU(hn::Or(p0, hn::ShiftLeftBytes<12>(bytes, p1)), bytes, to);
            hn::StoreU(hn::Or(hn::ShiftRightBytes<4>(bytes, p1), hn::ShiftLeftBytes<8>(bytes, p2)), bytes, to + 16);
            hn::StoreU(hn::Or(hn::ShiftRightBytes<8>(bytes, p2), hn::ShiftLeftBytes<4>(bytes, p3)), bytes, to + 32);
        }
        ScalarRow<PixelFormat::Bgr24>::Write(pixels + i * 3, packed + i * 4, select != nullptr ? select + i : nullptr,
                                             count - i);
    }
};

/// 16-bit pixels, eight to a vector of words. `RedShift` is where the red field starts.
template <PixelFormat F, int RedShift>
struct FieldRow {
    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        const hn::FixedTag<std::uint8_t, 16> bytes;
        const hn::FixedTag<std::uint16_t, 8> words;
        const auto five = hn::Set(words, 31);
        // v*255/31 of a 5-bit field is (v*1053) >> 7.
        const auto expand = [&](auto v) { return hn::ShiftRight<7>(hn::Mul(v, hn::Set(words, 1053))); };
        std::size_t i = 0;
        for (; i + 8 <= count; i += 8) {
            const auto p = hn::BitCast(words, hn::LoadU(bytes, pixels + i * 2));
            const auto blue = expand(hn::And(p, five));
            const auto red = expand(hn::And(hn::ShiftRight<RedShift>(p), five));
            auto green = blue;
            if constexpr (F == PixelFormat::Rgb565) {
                // The six-bit field is scaled by 255/31 and cut to 8 bits: (p & 0x7E0) * 16847 >> 16.
                green =
                    hn::And(hn::MulHigh(hn::And(p, hn::Set(words, 0x7E0)), hn::Set(words, 16847)), hn::Set(words, 255));
            } else {
                green = expand(hn::And(hn::ShiftRight<5>(p), five));
            }
            const auto blueGreen = hn::Or(blue, hn::ShiftLeft<8>(green));
            const auto redAlpha = hn::Or(red, hn::Set(words, 0xFF00));
            hn::StoreU(hn::BitCast(bytes, hn::InterleaveLower(words, blueGreen, redAlpha)), bytes, packed + i * 4);
            hn::StoreU(hn::BitCast(bytes, hn::InterleaveUpper(words, blueGreen, redAlpha)), bytes, packed + i * 4 + 16);
        }
        ScalarRow<F>::Read(pixels + i * 2, packed + i * 4, count - i);
    }

    static void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select,
                      std::size_t count) {
        const hn::FixedTag<std::uint8_t, 16> bytes;
        const hn::FixedTag<std::uint16_t, 8> words;
        const hn::FixedTag<std::uint8_t, 8> eight;
        const auto low = hn::Set(words, 255);
        // v*31/255 is (v*249) >> 11.
        const auto reduce = [&](auto v) { return hn::ShiftRight<11>(hn::Mul(v, hn::Set(words, 249))); };
        std::size_t i = 0;
        for (; i + 8 <= count; i += 8) {
            const auto first = hn::BitCast(words, hn::LoadU(bytes, packed + i * 4));
            const auto second = hn::BitCast(words, hn::LoadU(bytes, packed + i * 4 + 16));
            const auto blueGreen = hn::ConcatEven(words, second, first);
            const auto redAlpha = hn::ConcatOdd(words, second, first);
            auto p = hn::Or(hn::Or(hn::ShiftLeft<RedShift>(reduce(hn::And(redAlpha, low))),
                                   hn::ShiftLeft<5>(reduce(hn::ShiftRight<8>(blueGreen)))),
                            reduce(hn::And(blueGreen, low)));
            if (select != nullptr) {
                const auto chosen = hn::PromoteTo(words, hn::LoadU(eight, select + i));
                const auto before = hn::BitCast(words, hn::LoadU(bytes, pixels + i * 2));
                p = hn::IfThenElse(hn::Ne(chosen, hn::Zero(words)), p, before);
            }
            hn::StoreU(hn::BitCast(bytes, p), bytes, pixels + i * 2);
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
