#pragma once

#include <cstring>
#include <utility>

#include "pixel/PixelCodec.h"
#include "pixel/Spans.h"

// One row of pixels to packed pixels and back, pixel by pixel, and the frame in which rows of any kind run.

namespace vantu {

/// Pixels with alpha are moved as they are, without a conversion between straight and premultiplied colour, but for
/// inverted alpha; those without become opaque.
template <PixelFormat F>
struct ScalarRow {
    static constexpr std::size_t kBytes = BitsPerPixel(F) / 8;

    static void Read(const unsigned char* pixels, unsigned char* packed, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            if constexpr (HasAlpha(F)) {
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
            if constexpr (HasAlpha(F)) {
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
        to[3] = AlphaByte(F, to[3]);
    }
};

/// The codec of format `F` whose rows `Row` reads and writes.
template <PixelFormat F, typename Row>
constexpr SpanCodec MakeSpanCodec() {
    constexpr FormatFacts facts = FactsOf(F);
    return {
        .colors = facts.colors == PixelColors::Straight ? PackedColors::Straight : PackedColors::Premultiplied,
        .bytesPerPixel = BitsPerPixel(F) / 8,
        .inPlace = IsPacked(F),
        .keepsUnwritten = facts.lossy,
        .read =
            [](const PixelRows<const unsigned char>& from, std::size_t width, unsigned char* packed) {
                for (std::size_t row = 0; row < from.count; ++row) {
                    Row::Read(from.Row(row), packed + row * width * kPackedBytes, width);
                }
            },
        .write =
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

/// The codecs of all formats, rows by `Row<F>`.
template <template <PixelFormat> typename Row>
constexpr SpanCodecs MakeSpanCodecs() {
    constexpr auto make = []<PixelFormat F>() -> SpanCodec {
        if constexpr (HasColors(F)) return MakeSpanCodec<F, Row<F>>();
        return {};
    };
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return SpanCodecs{{make.template operator()<kPixelFormats[I]>()...}};
    }
    (std::make_index_sequence<kPixelFormats.size()>());
}

}  // namespace vantu
