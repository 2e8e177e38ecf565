#pragma once

#include <vantu/IQorImage.h>

#include <cstddef>
#include <cstdint>

namespace vantu {

/// The memory of an image by the image's own account. A factory may give another image than it was asked for, so
/// loaders keep what they write inside these bounds.
struct WritableBlock {
    explicit WritableBlock(IQorImage& image)
        : data(image.GetPixelData()),
          width(image.GetWidth()),
          height(data == nullptr ? 0 : image.GetHeight()),
          stride(RowStride(width, image.GetPixelFormat(), image.GetAlignment())) {}

    [[nodiscard]] std::uint64_t Size() const { return std::uint64_t{stride} * height; }
    [[nodiscard]] unsigned char* Row(std::size_t row) const { return data + row * stride; }

    unsigned char* data;
    unsigned int width;   ///< in pixels
    unsigned int height;  ///< in rows, 0 without memory
    unsigned int stride;  ///< in bytes
};

}  // namespace vantu
