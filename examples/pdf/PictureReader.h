#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// A picture in its own pixels, rows from the top.
struct Picture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t channels = 0;           // 1: a stencil, how much is painted; 4: blue, green, red, alpha, premultiplied
    std::vector<unsigned char> pixels;  // width * height * channels

    [[nodiscard]] const unsigned char* At(std::size_t x, std::size_t y) const {
        return pixels.data() + (y * width + x) * channels;
    }
};

// Reads a picture with its masks: explicit, by colour keys or soft. A mask of another size is spread over the picture,
// and the larger of both sizes is that of the result.
// @param resources give its colour space a meaning. @return nothing, with a note, for what cannot be read.
[[nodiscard]] std::optional<Picture> ReadPicture(QPDFObjectHandle picture, QPDFObjectHandle resources, Notes& notes);

// Keeps pictures, for pages that show one at many places. One thread at a time.
class PictureCache {
public:
    // @return null where ReadPicture returns nothing; else it is valid until the next call.
    const Picture* Get(QPDFObjectHandle picture, QPDFObjectHandle resources, Notes& notes);

private:
    std::map<QPDFObjGen, Picture> kept_;
    std::size_t bytes_ = 0;  // that were kept
};

}  // namespace pdf
