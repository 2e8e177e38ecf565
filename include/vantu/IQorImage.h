#pragma once

#include <vantu/CQorManagedObject.h>
#include <vantu/ColorMap.h>
#include <vantu/Export.h>

namespace vantu {

/// A raster image: one block of rows, all of the same stride, in one of nine pixel formats.
///
/// The first byte of the block belongs to the first row in memory, which is the visually lowest row of a
/// bottom-up image and the visually highest of a top-down one. The library asks for all of it anew at each operation
/// and takes no lock: an image is used by one thread at a time, unless all of them only read.
///
/// REQUIRES: size, format, alignment and row order never change during an image's life.
/// REQUIRES: the block, if there is one, holds `GetHeight()` rows at `RowStride` and stays where it is during a call.
class VANTU_API IQorImage : public CQorManagedObject {
public:
    /// Memory layout of a pixel. Colour bytes of formats 7 and 8 are premultiplied by alpha.
    enum class PixelFormat : unsigned int {
        Index1 = 1,               ///< palette index, the most significant bit of a byte is the leftmost pixel
        Index4 = 2,               ///< palette index, the high nibble of a byte is the left pixel
        Index8 = 3,               ///< palette index, or a bare sample when the image has no palette
        Rgb565 = 4,               ///< little-endian word: red 15-11, green 10-5, blue 4-0
        Rgb555 = 5,               ///< little-endian word: red 14-10, green 9-5, blue 4-0, bit 15 unused
        Bgr24 = 6,                ///< bytes blue, green, red
        Bgra32Premultiplied = 7,  ///< bytes blue, green, red, alpha; colour premultiplied
        Bgra32Inverted = 8,       ///< bytes blue, green, red, 255 - alpha; colour premultiplied by alpha
        Bgra32 = 9,               ///< bytes blue, green, red, alpha; colour straight
    };

protected:
    /// Writes size, format and pixels to a storage. @return false if the storage took less.
    virtual bool Serialize(CQorStorage& storage) const = 0;
    /// Reads back what `Serialize` wrote. @return false if it does not fit this image.
    virtual bool Deserialize(CQorStorage& storage) const = 0;
    /// Frees the pixel block.
    virtual void FreeMemory() const = 0;
    /// Size of the pixel block in bytes.
    virtual unsigned int GetDataSizeImpl() const = 0;

public:
    /// Width in pixels.
    virtual unsigned int GetWidth() const = 0;
    /// Height in pixels.
    virtual unsigned int GetHeight() const = 0;
    /// Layout of a pixel, one of the values 1 to 9.
    virtual PixelFormat GetPixelFormat() const = 0;
    /// Row alignment in bytes, 0 for none; see `RowStride`.
    virtual unsigned char GetAlignment() const = 0;
    /// First byte of the pixel block, owned by the image; null for an image without memory.
    virtual const unsigned char* GetPixelData() const = 0;
    /// The same block, writable.
    virtual unsigned char* GetPixelData() = 0;
    /// The palette, owned by the image, or null.
    virtual const ColorMap* GetPalette() const = 0;
    /// The same palette, writable.
    virtual ColorMap* GetPalette() = 0;
    /// True when the first row in memory is the visually lowest row.
    virtual bool IsBottomUp() const = 0;

protected:
    /// For implementations alone.
    /// @{
    IQorImage() = default;
    IQorImage(const IQorImage&) = default;
    IQorImage& operator=(const IQorImage&) = default;
    /// @}
};

/// The short name.
using PixelFormat = IQorImage::PixelFormat;

/// Width of a pixel in bits: 1, 4, 8, 16, 24 or 32; 0 for a value that is no pixel format.
[[nodiscard]] constexpr unsigned int BitsPerPixel(PixelFormat format) {
    switch (format) {
        case PixelFormat::Index1: return 1;
        case PixelFormat::Index4: return 4;
        case PixelFormat::Index8: return 8;
        case PixelFormat::Rgb565:
        case PixelFormat::Rgb555: return 16;
        case PixelFormat::Bgr24: return 24;
        case PixelFormat::Bgra32Premultiplied:
        case PixelFormat::Bgra32Inverted:
        case PixelFormat::Bgra32: return 32;
    }
    return 0;
}

/// Bytes from one row to the next: the bits of a row in whole bytes, rounded up to a multiple of the alignment. 32-bit
/// arithmetic that wraps.
/// @param width in pixels.
/// @param format layout of a pixel.
/// @param alignment in bytes, 0 to 255, no power of two needed; 0 and 1 change nothing.
/// @return bytes.
[[nodiscard]] constexpr unsigned int RowStride(unsigned int width, PixelFormat format, unsigned char alignment) {
    const unsigned int bytes = (width * BitsPerPixel(format) + 7U) >> 3;
    if (alignment == 0) return bytes;
    const unsigned int t = bytes - 1U + alignment;
    return t - t % alignment;
}

}  // namespace vantu
