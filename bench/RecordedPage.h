#pragma once

#include <string>
#include <vector>

#include "Calls.h"
#include "PageScene.h"

namespace vantu::bench {

/// The calls that a page of a PDF file makes on one image: on the page itself, or on what becomes a soft mask or a
/// tile.
struct RecordedImage {
    std::vector<pdf::Call> calls;        ///< all of them
    std::vector<unsigned char> painted;  ///< what they make of the image
    std::vector<pdf::Call> shared;       ///< those that the plain loop and pixman can make, too
    PageScene scene;                     ///< the shared ones as they make them, on the image
    pdf::Pixels visible;                 ///< what of the image is painted on
};

/// What the first page of a PDF file makes of the library; the page itself is the first of the images.
/// @throws std::exception if the file cannot be read.
std::vector<RecordedImage> RecordPage(const std::string& path, double dotsPerInch);

}  // namespace vantu::bench
