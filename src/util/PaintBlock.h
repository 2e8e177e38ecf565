#pragma once

#include <vantu/IQorImage.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "util/MemoryBlock.h"

namespace vantu {

/// Calls `paint(bytes)` to write `size` bytes of an image's block.
///
/// A factory may choose shorter rows than the painter lays. Where the block has less than `size` bytes the painter gets
/// a roomy copy of it, of which the block keeps what it can hold.
/// @return false, with nothing painted, for an image that should have memory and has none.
template <typename Paint>
bool PaintBlock(IQorImage& image, std::size_t size, Paint paint) {
    const auto block = BlockOf(image);
    if (block.Size() == 0 || size == 0) return true;
    if (block.data == nullptr) return false;
    if (block.Size() >= size) {
        paint(block.data);
        return true;
    }
    std::vector<unsigned char> roomy(block.data, block.data + block.Size());
    roomy.resize(size);
    paint(roomy.data());
    std::copy_n(roomy.begin(), block.Size(), block.data);
    return true;
}

}  // namespace vantu
