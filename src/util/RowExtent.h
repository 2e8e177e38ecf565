#pragma once

#include <vantu/Geometry.h>
#include <vantu/IQorImage.h>

#include <cstddef>

namespace vantu {

/// A rectangle of an image as bytes and rows of its block. Rectangles of 1- and 4-bit pixels may begin and end inside a
/// byte: those bits are counted apart from the whole bytes.
struct RowExtent {
    std::size_t byteStart = 0;  ///< first whole byte of a row
    std::size_t byteCount = 0;  ///< whole bytes of a row
    std::size_t firstRow = 0;   ///< lowest row in memory
    std::size_t rowCount = 0;
    unsigned int leadBits = 0;   ///< low bits of the byte before `byteStart`
    unsigned int trailBits = 0;  ///< high bits of the byte after the whole ones
    bool insideOneByte = false;  ///< starts and ends inside one byte with bits left over on both sides; no counts
};

/// A range with x0 above x1 is the whole image, the unused bits of each row's last byte included. A range without
/// columns or without rows, or with y0 above y1, has no rows.
inline RowExtent ComputeRowExtent(const IQorImage& image, const Range<int, 2>& range) {
    const unsigned int bits = BitsPerPixel(image.GetPixelFormat());
    RowExtent extent;
    if (range.x0 > range.x1) {
        extent.byteCount = RowStride(image.GetWidth(), image.GetPixelFormat(), 0);
        extent.rowCount = image.GetHeight();
        return extent;
    }
    if (range.x0 == range.x1 || range.y0 >= range.y1) return extent;

    const auto x0 = static_cast<unsigned int>(range.x0), x1 = static_cast<unsigned int>(range.x1);
    const auto y0 = static_cast<unsigned int>(range.y0), y1 = static_cast<unsigned int>(range.y1);
    // Bits are counted in 32 bits, as the stride is: if a row's length wraps, a fill of its width does too.
    const unsigned int startBit = x0 * bits;
    const unsigned int bitCount = (x1 - x0) * bits;
    const unsigned int leadBits = (0U - startBit) & 7;
    extent.rowCount = y1 - y0;
    extent.firstRow = image.IsBottomUp() ? image.GetHeight() - y1 : y0;
    extent.byteStart = (startBit + 7) >> 3;
    extent.insideOneByte = bitCount < leadBits;
    if (extent.insideOneByte) return extent;
    extent.byteCount = (bitCount - leadBits) >> 3;
    extent.leadBits = leadBits;
    extent.trailBits = x1 * bits & 7;
    return extent;
}

}  // namespace vantu
