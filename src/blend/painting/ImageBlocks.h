#pragma once

#include <vantu/IQorImage.h>

#include <optional>

#include "blend/RangeWalk.h"
#include "pixel/Accessor.h"
#include "pixel/DynamicAccessor.h"

// Where the pixels of images lie in their blocks of memory.

namespace vantu {

template <typename Byte>
RowsFromTop<Byte> RowsOf(Byte* block, const IQorImage& image, PixelFormat format) {
    return {block, image.GetWidth(), image.GetHeight(), format, image.GetAlignment(), image.IsBottomUp()};
}

/// Whether two images share bytes of their blocks.
bool Overlap(const IQorImage& a, const IQorImage& b);

/// Whether a rectangle of an image, taken to be of format `format`, lies inside the image's block.
bool InsideBlock(const IQorImage& image, PixelFormat format, int x, int y, const PaintArea& area);

/// The rows behind an accessor record of pixels of format `format` themselves; nothing if it goes through a palette.
std::optional<RowsFromTop<const unsigned char>> DirectRows(const DynamicAccessor& record, PixelFormat format,
                                                           const RowsFromTop<unsigned char>& like);

}  // namespace vantu
