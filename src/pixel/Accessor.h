#pragma once

#include <vantu/IQorImage.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "pixel/PixelCodec.h"
#include "pixel/PixelRows.h"

// Typed views over pixel memory. Coordinates count from the visual top left whichever way the rows lie; nothing is
// range-checked and nothing is owned.

namespace vantu {

/// Root of the accessor family.
class AccessorBase {
public:
    virtual ~AccessorBase() = default;

protected:
    AccessorBase() = default;
    AccessorBase(const AccessorBase&) = default;
    AccessorBase& operator=(const AccessorBase&) = default;
};

/// View of whole-byte pixels. `Byte` is `unsigned char`, or const for a read-only view. Formats of less than a byte
/// have step 0 and offer no pixel access; those and 8-bit samples hold no colours.
template <PixelFormat F, typename Byte>
class DirectAccessor : public AccessorBase {
public:
    DirectAccessor(Byte* block, unsigned int width, unsigned int height, unsigned char alignment, bool bottomUp) {
        const auto rows = PixelRows<Byte>{block, RowStride(width, F, alignment), height}.FromTop(bottomUp);
        pixels = rows.first;
        rowStep = rows.step;
    }

    [[nodiscard]] Byte* Address(unsigned int x, unsigned int y) const { return pixels + step * x + rowStep * y; }

    void GetColor(unsigned int x, unsigned int y, Color& out) const { ReadPixel<F>(Address(x, y), out); }

    void SetColor(unsigned int x, unsigned int y, const Color& in) const requires(!std::is_const_v<Byte>) {
        WritePixel<F>(Address(x, y), in);
    }

    [[nodiscard]] unsigned int GetValue(unsigned int x, unsigned int y) const requires(BitsPerPixel(F) >= 8) {
        return LoadValue<F>(Address(x, y));
    }

    void SetValue(unsigned int x, unsigned int y, unsigned int value) const
        requires(BitsPerPixel(F) >= 8 && !std::is_const_v<Byte>) {
        StoreValue<F>(Address(x, y), value);
    }

    Byte* pixels;                              ///< the top left pixel
    std::uint32_t step = BitsPerPixel(F) / 8;  ///< bytes from one pixel to the next
    std::int64_t rowStep;                      ///< bytes from one row to the next one down
};

/// View of palette indices, packed from the most significant bit of each byte downward. A palette on a format of more
/// than 8 bits is addressed the same way, which makes every index 0.
template <PixelFormat F, typename Byte>
class PackedIndexAccessor : public AccessorBase {
public:
    using Palette = std::conditional_t<std::is_const_v<Byte>, const ColorMap, ColorMap>;

    PackedIndexAccessor(Byte* block, unsigned int width, unsigned int height, unsigned char alignment, bool bottomUp,
                        Palette* colors)
        : palette(colors) {
        const auto rows = PixelRows<Byte>{block, RowStride(width, F, alignment), height}.FromTop(bottomUp);
        pixels = rows.first;
        rowStep = rows.step;
    }

    [[nodiscard]] unsigned int GetValue(unsigned int x, unsigned int y) const {
        const unsigned int position = step * x;
        const unsigned int byte = *Address(position, y);
        return byte >> Shift(position) & ((1U << (step & 31)) - 1);
    }

    void GetColor(unsigned int x, unsigned int y, Color& out) const {
        if (palette != nullptr) out = static_cast<const ColorMap&>(*palette)[GetValue(x, y)];
    }

    void SetColor(unsigned int, unsigned int, const Color&) const {}

    void SetValue(unsigned int x, unsigned int y, unsigned int value) const {
        if constexpr (!std::is_const_v<Byte>) {
            const unsigned int position = step * x;
            const unsigned int mask = (((1U << (step & 31)) & 255) - 1) & 255;
            Byte* const byte = Address(position, y);
            *byte =
                static_cast<unsigned char>((*byte & ~(mask << Shift(position))) | (mask & value) << Shift(position));
        }
    }

    Byte* pixels;
    std::uint32_t step = BitsPerPixel(F);  ///< bits per pixel
    std::int64_t rowStep;
    Palette* palette;

private:
    [[nodiscard]] Byte* Address(unsigned int position, unsigned int y) const {
        return pixels + rowStep * y + (position >> 3);
    }
    [[nodiscard]] unsigned int Shift(unsigned int position) const { return (8 - (position & 7) - step) & 31; }
};

template <PixelFormat F>
using Accessor = DirectAccessor<F, unsigned char>;
template <PixelFormat F>
using ConstAccessor = DirectAccessor<F, const unsigned char>;
template <PixelFormat F>
using IndexedAccessor = PackedIndexAccessor<F, unsigned char>;
template <PixelFormat F>
using ConstIndexedAccessor = PackedIndexAccessor<F, const unsigned char>;

/// An accessor of class `View` over the whole of an image, with the image's own memory, size and row order.
template <typename View, typename Image, typename... Palette>
View ViewOf(Image& image, Palette*... palette) {
    return View(image.GetPixelData(), image.GetWidth(), image.GetHeight(), image.GetAlignment(), image.IsBottomUp(),
                palette...);
}

}  // namespace vantu
