#pragma once

#include <cstring>

#include "pixel/PixelCodec.h"
#include "pixel/Spans.h"

// One row of pixels to packed pixels and back, pixel by pixel, and the frame in which rows of any kind run.

namespace vantu {

/// 32-bit formats are moved as they are, without a conversion between straight and premultiplied colour, but for
/// inverted alpha; the formats without alpha become opaque.
template <PixelFormat F>
struct ScalarRow {
    static constexpr std::size_t kBytes = BitsPerPixel(F) / 8;

    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            if constexpr (kBytes == kPackedBytes) {
                Move(pixels + i * kBytes, packed + i * kPackedBytes);
            } else {
                Color color;
                ReadPixel<F>(pixels + i * kBytes, color);
                WritePixel<PixelFormat::Bgra32>(packed + i * kPackedBytes, color);
            }
        }
    }

    static void Write(unsigned char* pixels, const unsigned char* packed, const unsigned char* select,
                      std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            if (select != nullptr && select[i] == 0) continue;
            if constexpr (kBytes == kPackedBytes) {
                Move(packed + i * kPackedBytes, pixels + i * kBytes);
            } else {
                Color color;
                ReadPixel<PixelFormat::Bgra32>(packed + i * kPackedBytes, color);
                WritePixel<F>(pixels + i * kBytes, color);
            }
        }
    }

private:
    static void Move(const unsigned char* from, unsigned char* to) {
        std::memcpy(to, from, kPackedBytes);
        if constexpr (F == PixelFormat::Bgra32Inverted) to[3] ^= 0xFF;
    }
};

/// The codec of format `F` whose rows `Row` reads and writes.
template <PixelFormat F, typename Row>
constexpr SpanCodec MakeSpanCodec() {
    constexpr std::size_t bytes = BitsPerPixel(F) / 8;
    return {
        F == PixelFormat::Bgra32 ? PackedForm::Straight : PackedForm::Premultiplied,
        bytes,
        F == PixelFormat::Bgra32Premultiplied || F == PixelFormat::Bgra32,
        bytes == 2,
        [](const PixelRows<const unsigned char>& from, std::size_t width, unsigned char* packed) {
            for (std::size_t row = 0; row < from.count; ++row) {
                Row::Read(from.Row(row), packed + row * width * kPackedBytes, width);
            }
        },
        [](const PixelRows<unsigned char>& to, std::size_t width, const unsigned char* packed,
           const unsigned char* select) {
            for (std::size_t row = 0; row < to.count; ++row) {
                const std::size_t first = row * width;
                Row::Write(to.Row(row), packed + first * kPackedBytes, select != nullptr ? select + first : nullptr,
                           width);
            }
        },
    };
}

/// The codecs of all formats with colours, rows by `Row<F>`.
template <template <PixelFormat> typename Row>
constexpr SpanCodecs MakeSpanCodecs() {
    using enum IQorImage::PixelFormat;  // by its own name: clang 14 takes no alias here
    return {
        MakeSpanCodec<Rgb565, Row<Rgb565>>(),
        MakeSpanCodec<Rgb555, Row<Rgb555>>(),
        MakeSpanCodec<Bgr24, Row<Bgr24>>(),
        MakeSpanCodec<Bgra32Premultiplied, Row<Bgra32Premultiplied>>(),
        MakeSpanCodec<Bgra32Inverted, Row<Bgra32Inverted>>(),
        MakeSpanCodec<Bgra32, Row<Bgra32>>(),
    };
}

}  // namespace vantu
