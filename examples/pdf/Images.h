#pragma once

#include <vantu/CQorImage.h>

#include <memory>

#include "Geometry.h"

namespace pdf {

// A clear image for the pixels of a box: Bgra32Premultiplied, top-down, its rows one after the other.
// REQUIRES: the box is not empty.
inline std::shared_ptr<vantu::CQorImage> MakeImage(const Pixels& box) {
    return std::make_shared<vantu::CQorImage>(
        static_cast<unsigned int>(Width(box)), static_cast<unsigned int>(Height(box)),
        vantu::PixelFormat::Bgra32Premultiplied, static_cast<unsigned char>(0), false);
}

}  // namespace pdf
