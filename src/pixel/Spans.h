#pragma once

#include <vantu/IQorImage.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "pixel/Formats.h"
#include "pixel/PixelRows.h"

// Rectangles of pixels as packed pixels: four bytes blue, green, red, alpha each, of which every blending stage works.

namespace vantu {

/// What the colour bytes of packed pixels are. Opaque pixels are both.
enum class PackedColors { Premultiplied, Straight };

inline constexpr std::size_t kPackedBytes = 4;

/// Where a packed pixel's alpha lies in the pixel read as one word.
inline constexpr auto kPackedAlpha =
    std::bit_cast<std::uint32_t>(std::array<unsigned char, kPackedBytes>{0, 0, 0, 255});

/// How rows of `width` pixels of a format that carries colours become packed, one after another without gaps, and come
/// back.
struct SpanCodec {
    using Read = void (*)(const PixelRows<const unsigned char>& from, std::size_t width, unsigned char* packed);
    using Write = void (*)(const PixelRows<unsigned char>& to, std::size_t width, const unsigned char* packed,
                           const unsigned char* select);

    PackedColors colors;
    unsigned int bytesPerPixel;
    bool inPlace;         ///< the pixels are packed as they lie in memory
    bool keepsUnwritten;  ///< reading and writing a pixel does not give its bytes back: write only what changed
    Read read;
    Write write;  ///< stores those pixels alone whose byte in `select` is not 0; all if it is null
};

/// The codecs of all formats; those of formats without colours are empty.
struct SpanCodecs {
    [[nodiscard]] const SpanCodec& Of(PixelFormat format) const { return codecs[static_cast<std::size_t>(format) - 1]; }

    std::array<SpanCodec, kPixelFormats.size()> codecs;
};

/// Plain loops over the conversions that define the formats.
const SpanCodecs& ScalarSpanCodecs();

/// The fastest codecs that this machine runs; chosen at first use.
const SpanCodecs& ActiveSpanCodecs();

}  // namespace vantu
