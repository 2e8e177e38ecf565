#include "pixel/Spans.h"

#include <array>
#include <cstring>

#include "pixel/PixelCodec.h"

namespace vantu {
namespace {

constexpr bool IsPacked(PixelFormat format) {
    return BitsPerPixel(format) == 32;
}

/// Packed pixels are moved without a conversion between straight and premultiplied colour: a 32-bit format keeps its
/// bytes, but for inverted alpha, and the formats without alpha become opaque.
template <PixelFormat F>
void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
    if constexpr (IsPacked(F)) {
        std::memcpy(packed, pixels, count * kPackedBytes);
        if constexpr (F == PixelFormat::Bgra32Inverted) {
            for (std::size_t i = 0; i < count; ++i) packed[4 * i + 3] ^= 0xFF;
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            Color color;
            ReadPixel<F>(pixels + i * (BitsPerPixel(F) / 8), color);
            WritePixel<PixelFormat::Bgra32>(packed + i * kPackedBytes, color);
        }
    }
}

template <PixelFormat F>
void WriteOne(unsigned char* pixel, const unsigned char* packed) {
    if constexpr (IsPacked(F)) {
        std::memcpy(pixel, packed, kPackedBytes);
        if constexpr (F == PixelFormat::Bgra32Inverted) pixel[3] ^= 0xFF;
    } else {
        Color color;
        ReadPixel<PixelFormat::Bgra32>(packed, color);
        WritePixel<F>(pixel, color);
    }
}

template <PixelFormat F>
void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select, std::size_t count) {
    constexpr std::size_t bytes = BitsPerPixel(F) / 8;
    if (select != nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            if (select[i] != 0) WriteOne<F>(pixels + i * bytes, packed + i * kPackedBytes);
        }
    } else if constexpr (IsPacked(F) && F != PixelFormat::Bgra32Inverted) {
        std::memcpy(pixels, packed, count * kPackedBytes);
    } else {
        for (std::size_t i = 0; i < count; ++i) WriteOne<F>(pixels + i * bytes, packed + i * kPackedBytes);
    }
}

template <PixelFormat F>
constexpr SpanCodec kCodec = {
    F == PixelFormat::Bgra32 ? PackedForm::Straight : PackedForm::Premultiplied,
    BitsPerPixel(F) / 8,
    F == PixelFormat::Bgra32Premultiplied || F == PixelFormat::Bgra32,
    BitsPerPixel(F) == 16,
    Read<F>,
    Write<F>,
};

constexpr std::array kCodecs = {
    kCodec<PixelFormat::Rgb565>,         kCodec<PixelFormat::Rgb555>,
    kCodec<PixelFormat::Bgr24>,          kCodec<PixelFormat::Bgra32Premultiplied>,
    kCodec<PixelFormat::Bgra32Inverted>, kCodec<PixelFormat::Bgra32>,
};
static_assert(kCodecs.size() ==
              static_cast<std::size_t>(PixelFormat::Bgra32) - static_cast<std::size_t>(PixelFormat::Rgb565) + 1);

}  // namespace

const SpanCodec& SpanCodecOf(PixelFormat format) {
    return kCodecs[static_cast<std::size_t>(format) - static_cast<std::size_t>(PixelFormat::Rgb565)];
}

}  // namespace vantu
