#pragma once

#include <vantu/IQorImage.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "blend/definition/RangeWalk.h"
#include "pixel/PixelRows.h"

// Where the pixels of images lie in their blocks of memory.

namespace vantu {

/// Whether rows share bytes of memory.
inline bool Overlap(const PixelRows<unsigned char>& a, const PixelRows<const unsigned char>& b) {
    const std::less<const unsigned char*> before;
    const auto ra = a.InMemoryOrder();
    const auto rb = b.InMemoryOrder();
    return ra.first != nullptr && rb.first != nullptr && before(ra.first, rb.Row(rb.count)) &&
           before(rb.first, ra.Row(ra.count));
}

/// What is asked of a mask, once a call: the answers are a host's.
struct MaskPixels {
    explicit MaskPixels(const IQorImage& mask)
        : format(mask.GetPixelFormat()), palette(mask.GetPalette()), rows(RowsFromTop(mask, format)) {}

    PixelFormat format;
    const ColorMap* palette;
    PixelRows<const unsigned char> rows;  ///< from the top
};

/// Whether a rectangle of an image, taken to be of format `format`, lies inside the image's block.
bool InsideMemory(const IQorImage& image, PixelFormat format, int x, int y, const PaintArea& area);

/// The rows of a snapshot from the top, if its pixels are of format `format` themselves, not behind a palette, and lie
/// as far apart as those of the image that it was taken of.
std::optional<PixelRows<const unsigned char>> SnapshotRows(const IQorImage& snapshot, PixelFormat format,
                                                           std::int64_t step);

}  // namespace vantu
