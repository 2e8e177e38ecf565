#pragma once

#include <optional>
#include <string>

#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

inline constexpr std::size_t kMostPicturePixels = 1U << 26;

// The number of 1 to 32 bits that begins at a bit; those beyond the end are 0.
unsigned int BitsAt(const std::string& bytes, std::size_t bit, unsigned int count);

// The numbers that a picture is made of, as its stream has them.
struct Samples {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t components = 0;  // of a pixel
    unsigned int bits = 0;       // of a component: 1, 2, 4, 8 or 16
    std::string bytes;           // rows from the top, each begins with a byte

    // A component of a pixel; 0 where bytes are missing.
    [[nodiscard]] unsigned int At(std::size_t x, std::size_t y, std::size_t component) const;
    [[nodiscard]] unsigned int Greatest() const { return (1U << bits) - 1; }
};

// Undoes the filters of a picture.
// @param components what its colour space takes, 1 for a stencil.
// @return nothing, with a note, for a picture of a kind that is not read, of no size or of more than
// kMostPicturePixels.
[[nodiscard]] std::optional<Samples> ReadSamples(QPDFObjectHandle picture, std::size_t components, Notes& notes);

}  // namespace pdf
