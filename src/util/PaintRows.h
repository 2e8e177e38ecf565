#pragma once

#include <vantu/IQorImage.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "pixel/PixelRows.h"

namespace vantu {

/// Calls `paint(rows)` to write `count` rows of an image's block, `stride` bytes apart.
///
/// A factory may choose shorter rows than the painter lays. Where the block is too small the painter gets a roomy copy
/// of it, of which the block keeps what it can hold.
/// @return false, with nothing painted, for an image that should have memory and has none.
/// @throws std::bad_alloc if there is no memory for the copy.
template <typename Paint>
bool PaintRows(IQorImage& image, unsigned int stride, std::size_t count, Paint paint) {
    const auto rows = RowsInMemory(image);
    PixelRows<unsigned char> painted{rows.first, stride, count};
    if (rows.Size() == 0 || painted.Size() == 0) return true;
    if (rows.first == nullptr) return false;
    if (rows.Size() >= painted.Size()) {
        paint(painted);
        return true;
    }
    std::vector<unsigned char> roomy(rows.first, rows.first + rows.Size());
    if (painted.Size() > roomy.max_size()) throw std::bad_alloc();
    roomy.resize(static_cast<std::size_t>(painted.Size()));
    painted.first = roomy.data();
    paint(painted);
    std::copy_n(roomy.begin(), rows.Size(), rows.first);
    return true;
}

}  // namespace vantu
