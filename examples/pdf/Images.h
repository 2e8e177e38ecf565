#pragma once

#include <vantu/CQorImage.h>

#include <memory>

#include "Mask.h"

namespace pdf {

// An image on the pixels of a page.
struct PlacedImage {
    Mask coverage;                            // what it covers
    std::shared_ptr<vantu::IQorImage> image;  // Bgra32Premultiplied, top-down, as large as the coverage's box, or null
};

// A clear image for the pixels of a box: Bgra32Premultiplied, top-down, its rows one after the other.
// REQUIRES: the box is not empty.
inline std::shared_ptr<vantu::CQorImage> MakeImage(const Pixels& box) {
    return std::make_shared<vantu::CQorImage>(
        static_cast<unsigned int>(Width(box)), static_cast<unsigned int>(Height(box)),
        vantu::PixelFormat::Bgra32Premultiplied, static_cast<unsigned char>(0), false);
}

}  // namespace pdf
