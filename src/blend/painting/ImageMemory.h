#pragma once

#include <vantu/IQorImage.h>

#include <optional>

#include "blend/definition/RangeWalk.h"
#include "pixel/DynamicAccessor.h"
#include "pixel/PixelRows.h"

// Where the pixels of images lie in their blocks of memory.

namespace vantu {

/// Whether two images share bytes of their blocks.
bool Overlap(const IQorImage& a, const IQorImage& b);

/// Whether a rectangle of an image, taken to be of format `format`, lies inside the image's block.
bool InsideMemory(const IQorImage& image, PixelFormat format, int x, int y, const PaintArea& area);

/// The rows behind an accessor record of pixels of format `format` themselves; nothing if it goes through a palette.
std::optional<PixelRows<const unsigned char>> DirectRows(const DynamicAccessor& record, PixelFormat format,
                                                         const PixelRows<unsigned char>& like);

}  // namespace vantu
