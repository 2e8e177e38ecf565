#pragma once

#include <vantu/IQorImage.h>

#include <cstdint>
#include <memory>
#include <optional>

#include "painter/Rectangles.h"

namespace vantu {

/// What a call asks of an image: once, as each question is a virtual call.
struct ImageFacts {
    explicit ImageFacts(const IQorImage& image)
        : format(image.GetPixelFormat()),
          width(image.GetWidth()),
          height(image.GetHeight()),
          alignment(image.GetAlignment()),
          hasPixels(image.GetPixelData() != nullptr) {}

    /// The image's rectangle, its top left corner at `at`.
    [[nodiscard]] Rectangle PlaceAt(const Point<int, 2>& at) const { return RectangleAt(at, width, height); }
    /// Whether a row has 2^31 bits or more, of an image whose format is one.
    [[nodiscard]] bool IsTooWide() const {
        const std::uint64_t bits = BitsPerPixel(format);
        return width * bits + 8 * (std::uint64_t{alignment} + 1) >= 1U << 31;
    }

    PixelFormat format;
    unsigned int width;
    unsigned int height;
    unsigned char alignment;
    bool hasPixels;
};

/// The facts of an image; nothing if there is none.
inline std::optional<ImageFacts> FactsOf(const std::shared_ptr<IQorImage>& image) {
    return image ? std::optional<ImageFacts>(*image) : std::nullopt;
}

}  // namespace vantu
