#pragma once

#include <vantu/IQorImage.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace vantu {

/// Rows of pixels, down or up in memory.
template <typename Byte>
struct PixelRows {
    [[nodiscard]] Byte* Row(std::size_t index) const { return first + step * static_cast<std::int64_t>(index); }

    /// Bytes that a row takes in memory.
    [[nodiscard]] std::size_t Stride() const { return static_cast<std::size_t>(step < 0 ? -step : step); }
    /// Bytes that all rows take; of rows that are still to be made maybe more than memory has addresses.
    [[nodiscard]] std::uint64_t Size() const { return std::uint64_t{Stride()} * count; }

    /// The same rows, the last one first. Without memory there is no place to go to.
    [[nodiscard]] PixelRows Reversed() const {
        return {first == nullptr || count == 0 ? first : Row(count - 1), -step, count};
    }
    /// Rows in the order of memory, brought into the order of the picture: the top one first.
    [[nodiscard]] PixelRows FromTop(bool bottomUp) const { return bottomUp ? Reversed() : *this; }
    /// Rows in either order, brought into the order of memory.
    [[nodiscard]] PixelRows InMemoryOrder() const { return FromTop(step < 0); }

    /// The same rows, read-only.
    operator PixelRows<const Byte>() const requires(!std::is_const_v<Byte>) { return {first, step, count}; }

    Byte* first;        ///< null for an image without memory
    std::int64_t step;  ///< bytes from one row to the next
    std::size_t count;
};

/// Whether `RowStride` counts a row of pixels in full. It counts bits in 32 bits: the stride of a row that is too long
/// for that has wrapped, and so has the memory that an image gives it.
inline bool RowIsCounted(std::uint64_t width, PixelFormat format) {
    return width * BitsPerPixel(format) + 7 <= std::numeric_limits<unsigned int>::max();
}

/// The rows of an image in the order of memory, as long as pixels of format `format` make them; read-only for a const
/// image.
template <typename Image>
inline auto RowsInMemory(Image& image, PixelFormat format) {
    using Byte = std::remove_pointer_t<decltype(image.GetPixelData())>;
    return PixelRows<Byte>{image.GetPixelData(), RowStride(image.GetWidth(), format, image.GetAlignment()),
                           image.GetHeight()};
}
template <typename Image>
inline auto RowsInMemory(Image& image) {
    return RowsInMemory(image, image.GetPixelFormat());
}

/// The same rows in the order of the picture.
template <typename Image>
inline auto RowsFromTop(Image& image, PixelFormat format) {
    return RowsInMemory(image, format).FromTop(image.IsBottomUp());
}

}  // namespace vantu
