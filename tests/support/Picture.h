#pragma once

#include <vantu/IQorImage.h>

#include <random>

#include "pixel/Accessor.h"
#include "pixel/Formats.h"
#include "support/TestImage.h"

// Pixels of an image by their place in the picture, whatever the format: the slow and plain way that fast code is
// compared with.

namespace vantu::test {

/// A colour as 0xAARRGGBB.
inline unsigned int Argb(const Color& color) {
    return color.GetAlpha() * 0x1000000U + color.GetRed() * 0x10000U + color.GetGreen() * 0x100U + color.GetBlue();
}

/// Calls `use(accessor)` with an accessor of the raw values of an image, which need not have a palette.
template <typename Image, typename Use>
unsigned int WithValues(Image& image, Use use) {
    using Byte = std::remove_pointer_t<decltype(image.GetPixelData())>;
    return DispatchFormat(image.GetPixelFormat(), 0U, [&]<PixelFormat F>() -> unsigned int {
        if constexpr (BitsPerPixel(F) < 8) {
            return use(ViewOf<PackedIndexAccessor<F, Byte>>(image, static_cast<ColorMap*>(nullptr)));
        } else {
            return use(ViewOf<DirectAccessor<F, Byte>>(image));
        }
    });
}

inline unsigned int ValueAt(const IQorImage& image, unsigned int x, unsigned int y) {
    return WithValues(image, [=](const auto& pixels) { return pixels.GetValue(x, y); });
}

inline void SetValueAt(IQorImage& image, unsigned int x, unsigned int y, unsigned int value) {
    WithValues(image, [=](const auto& pixels) {
        pixels.SetValue(x, y, value);
        return 0U;
    });
}

/// Whether two images show the same raw values, pixel by pixel.
inline bool SamePicture(const IQorImage& a, const IQorImage& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight()) return false;
    for (unsigned int y = 0; y < a.GetHeight(); ++y) {
        for (unsigned int x = 0; x < a.GetWidth(); ++x) {
            if (ValueAt(a, x, y) != ValueAt(b, x, y)) return false;
        }
    }
    return true;
}

/// Makes runs of clear, full and mixed bytes or alphas, as pictures and stencils have them, in an image of 1 or 32
/// bits.
inline void AddRuns(TestImage& image, Random& random) {
    const bool hasAlpha = BitsPerPixel(image.GetPixelFormat()) == 32;
    const unsigned int step = hasAlpha ? 4 : 1;
    if (!hasAlpha && image.GetPixelFormat() != PixelFormat::Index1) return;
    for (unsigned int y = 0, run = 0, kind = 0; y < image.GetHeight(); ++y) {
        unsigned char* const row = image.GetPixelData() + std::size_t{image.Stride()} * y;
        for (unsigned int i = 0; i + step <= image.Stride(); i += step) {
            if (run-- == 0) {
                run = Between(random, 0, 30);
                kind = Between(random, 0, 2);
            }
            if (kind < 2) row[i + step - 1] = static_cast<unsigned char>(kind * 255);
        }
    }
}

/// Makes the first rows of an image of 32 bits opaque, some or all.
inline void AddOpaqueRows(TestImage& image, Random& random) {
    if (BitsPerPixel(image.GetPixelFormat()) != 32) return;
    const std::size_t end = std::size_t{image.Stride()} * Between(random, 0, image.GetHeight());
    for (std::size_t i = 3; i < end; i += 4) image.GetPixelData()[i] = 255;
}

/// A shape of the given format, up to `limit` pixels wide and high, of any alignment and row order.
inline Shape RandomShape(Random& random, PixelFormat format, unsigned int limit) {
    return {Between(random, 1, limit), Between(random, 1, limit), format,
            kAlignments[Between(random, 0, kAlignments.size() - 1)], Between(random, 0, 1) == 1};
}

}  // namespace vantu::test
