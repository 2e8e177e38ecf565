#pragma once

#include <vantu/IQorImage.h>

#include "pixel/PixelRows.h"

namespace vantu {

/// The rows of an image in the order of memory, by the image's own account; none without memory. A factory may give
/// another image than it was asked for, so loaders keep what they write inside these rows.
inline PixelRows<unsigned char> WritableRows(IQorImage& image) {
    auto rows = RowsInMemory(image);
    if (rows.first == nullptr) rows.count = 0;
    return rows;
}

}  // namespace vantu
