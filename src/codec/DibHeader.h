#pragma once

#include <cstdint>

namespace vantu {

// A bitmap file: file header, info header, palette of 4-byte entries (blue, green, red, unused), rows. Little-endian.

/// Size of the file header: type, file size, two reserved words, offset of the rows.
inline constexpr unsigned int kDibFileHeaderSize = 14;
inline constexpr unsigned short kDibType = 0x4D42;  ///< "BM"
inline constexpr unsigned int kDibEntrySize = 4;

/// The info header, field by field as in the file.
struct DibInfoHeader {
    std::uint32_t biSize;
    std::uint32_t biWidth;   ///< signed in the file
    std::uint32_t biHeight;  ///< signed in the file; negative if the first row is the top row
    std::uint16_t biPlanes;
    std::uint16_t biBitCount;
    std::uint32_t biCompression;
    std::uint32_t biSizeImage;
    std::uint32_t biXPelsPerMeter;
    std::uint32_t biYPelsPerMeter;
    std::uint32_t biClrUsed;
    std::uint32_t biClrImportant;
};
static_assert(sizeof(DibInfoHeader) == 40);

}  // namespace vantu
