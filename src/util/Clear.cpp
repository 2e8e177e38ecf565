#include <vantu/ImageUtil.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "pixel/Formats.h"
#include "pixel/PixelCodec.h"
#include "pixel/PixelRows.h"
#include "util/RowExtent.h"

namespace vantu {
namespace {

using Pattern = std::span<const unsigned char>;

/// Writes the pattern over and over: what stands is copied behind itself until the row is full.
void FillRow(unsigned char* row, std::size_t size, Pattern pattern) {
    if (pattern.size() == 1) {
        std::memset(row, pattern[0], size);
        return;
    }
    std::size_t filled = std::min(size, pattern.size());
    std::memcpy(row, pattern.data(), filled);
    while (filled < size) {
        const std::size_t count = std::min(filled, size - filled);
        std::memcpy(row + filled, row, count);
        filled += count;
    }
}

/// Fills the whole bytes of an extent. @return false without memory, unless there is nothing to fill.
bool FillRows(const PixelRows<unsigned char>& rows, const RowExtent& extent, Pattern pattern) {
    if (extent.byteCount == 0 || extent.rowCount == 0) return true;
    if (rows.first == nullptr) return false;
    if (std::ranges::all_of(pattern, [&](unsigned char byte) { return byte == pattern[0]; }))
        pattern = pattern.first(1);
    unsigned char* const first = rows.Row(extent.firstRow) + extent.byteStart;
    if (pattern.size() == 1 && extent.byteCount == rows.Stride()) {
        std::memset(first, pattern[0], extent.byteCount * extent.rowCount);
        return true;
    }
    FillRow(first, extent.byteCount, pattern);
    for (std::size_t i = 1; i < extent.rowCount; ++i) {
        std::memcpy(rows.Row(extent.firstRow + i) + extent.byteStart, first, extent.byteCount);
    }
    return true;
}

/// Gives the bits of `mask` in one byte of each row of an extent the value they have in `value`.
void FillBits(const PixelRows<unsigned char>& rows, const RowExtent& extent, std::size_t position, unsigned int mask,
              unsigned int value) {
    for (std::size_t i = 0; i < extent.rowCount; ++i) {
        unsigned char& byte = rows.Row(extent.firstRow + i)[position];
        byte = static_cast<unsigned char>((byte & ~mask) | (value & mask));
    }
}

}  // namespace

bool ImageUtil::Clear(IQorImage& image, const Color& color, const Range<int, 2>& range) {
    if (image.GetPalette() != nullptr) return false;
    const PixelFormat format = image.GetPixelFormat();
    const unsigned int bits = BitsPerPixel(format);
    const RowExtent extent = ComputeRowExtent(image, range);
    if (bits < 8) return !extent.insideOneByte && (extent.byteCount == 0 || extent.rowCount == 0);

    std::array<unsigned char, 4> pixel{};
    DispatchFormat(format, false, [&]<PixelFormat F>() {
        WritePixel<F>(pixel.data(), color);
        return true;
    });
    return FillRows(RowsInMemory(image), extent, Pattern(pixel).first(bits >> 3));
}

bool ImageUtil::ClearIndex(IQorImage& image, unsigned int index, const Range<int, 2>& range) {
    const unsigned int bits = BitsPerPixel(image.GetPixelFormat());
    if (bits == 0) return false;
    if (bits == 1) index = index != 0 ? 0xFF : 0;
    if (bits == 4) index = index << 4 | index;
    const unsigned int size = std::max(bits >> 3, 1U);
    std::array<unsigned char, 4> bytes{};
    for (unsigned int i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(index >> 8 * (size - 1 - i));

    const RowExtent extent = ComputeRowExtent(image, range);
    if (extent.rowCount == 0) return true;
    if (extent.insideOneByte) return false;
    const auto rows = RowsInMemory(image);
    if (rows.first == nullptr) return extent.byteCount == 0 && extent.leadBits == 0 && extent.trailBits == 0;
    FillRows(rows, extent, Pattern(bytes).first(size));
    if (extent.leadBits != 0) FillBits(rows, extent, extent.byteStart - 1, 0xFFU >> (8 - extent.leadBits), bytes[0]);
    if (extent.trailBits != 0) {
        FillBits(rows, extent, extent.byteStart + extent.byteCount, 0xFFU << (8 - extent.trailBits), bytes[0]);
    }
    return true;
}

bool ImageUtil::ClearPixelAlpha(IQorImage& image, unsigned char alpha, const Range<int, 2>& range) {
    const PixelFormat format = image.GetPixelFormat();
    if (!HasAlpha(format)) return false;
    const RowExtent extent = ComputeRowExtent(image, range);
    if (extent.byteCount == 0 || extent.rowCount == 0) return true;
    const auto rows = RowsInMemory(image);
    if (rows.first == nullptr) return false;

    const std::uint32_t stored = AlphaByte(format, alpha);
    for (std::size_t i = 0; i < extent.rowCount; ++i) {
        unsigned char* const row = rows.Row(extent.firstRow + i) + extent.byteStart;
        for (std::size_t x = 0; x < extent.byteCount; x += 4) {
            StoreWord32(row + x, (LoadWord32(row + x) & 0xFFFFFFU) | stored << 24);
        }
    }
    return true;
}

bool ImageUtil::ClearPaletteAlpha(ColorMap& palette, unsigned char alpha) {
    const auto size = static_cast<std::uint16_t>(palette.GetSize());
    for (unsigned int i = 0; i < size; ++i) palette[i].SetAlpha(alpha);
    return true;
}

}  // namespace vantu
