#pragma once

#include <vantu/IQorImage.h>

#include <cstddef>
#include <limits>
#include <type_traits>

namespace vantu {

/// Rows reached by stepping from one to the next, up or down in memory.
template <typename Byte>
struct RowWalk {
    [[nodiscard]] Byte* Row(std::size_t index) const { return first + step * static_cast<std::ptrdiff_t>(index); }

    Byte* first;
    std::ptrdiff_t step;
};

/// Pixel memory as it lies: `rows` rows, `stride` bytes apart, the first at `data`, which is null for an image without
/// memory.
template <typename Byte>
struct MemoryBlock {
    [[nodiscard]] std::size_t Size() const { return stride * rows; }
    [[nodiscard]] Byte* Row(std::size_t index) const { return data + index * stride; }

    /// The rows in the order of the picture, from its top or from its bottom; the block must hold at least one.
    [[nodiscard]] RowWalk<Byte> FromTop(bool bottomUp) const { return bottomUp ? Upward() : Downward(); }
    [[nodiscard]] RowWalk<Byte> FromBottom(bool bottomUp) const { return bottomUp ? Downward() : Upward(); }

    Byte* data;
    std::size_t stride;
    std::size_t rows;

private:
    [[nodiscard]] RowWalk<Byte> Downward() const { return {data, static_cast<std::ptrdiff_t>(stride)}; }
    [[nodiscard]] RowWalk<Byte> Upward() const { return {Row(rows - 1), -static_cast<std::ptrdiff_t>(stride)}; }
};

/// Whether `RowStride` counts a row of pixels in full. It counts bits in 32 bits: the stride of a row that is too long
/// for that has wrapped, and so has the memory that an image gives it.
inline bool RowIsCounted(std::size_t width, PixelFormat format) {
    return width * BitsPerPixel(format) + 7 <= std::numeric_limits<unsigned int>::max();
}

/// The block of an image, read-only for a const one.
template <typename Image>
auto BlockOf(Image& image) {
    using Byte = std::remove_pointer_t<decltype(image.GetPixelData())>;
    return MemoryBlock<Byte>{image.GetPixelData(),
                             RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment()),
                             image.GetHeight()};
}

}  // namespace vantu
