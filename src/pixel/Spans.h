#pragma once

#include <vantu/IQorImage.h>

#include <cstddef>

// Runs of pixels of a row as packed pixels: four bytes blue, green, red, alpha each, of which every blending stage
// works.

namespace vantu {

/// What the colour bytes of packed pixels are. Opaque pixels are both.
enum class PackedForm { Premultiplied, Straight };

inline constexpr std::size_t kPackedBytes = 4;

/// How the pixels of a format that carries colours become packed and come back.
struct SpanCodec {
    PackedForm form;
    unsigned int bytesPerPixel;
    bool inPlace;         ///< the pixels are packed as they lie in memory
    bool keepsUnwritten;  ///< reading and writing a pixel does not give its bytes back: write only what changed

    /// Packs `count` pixels from `pixels`.
    void (*read)(const unsigned char* pixels, unsigned char* packed, std::size_t count);
    /// Stores `count` packed pixels at `pixels`, those alone whose byte in `select` is not 0; all if it is null.
    void (*write)(unsigned char* pixels, const unsigned char* packed, const unsigned char* select, std::size_t count);
};

/// The codec of a format with colours (`Rgb565` to `Bgra32`).
const SpanCodec& SpanCodecOf(PixelFormat format);

}  // namespace vantu
