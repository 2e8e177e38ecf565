#pragma once

#include <vantu/CQorImage.h>

#include <memory>

#include "Mask.h"
#include "Notes.h"
#include "PictureReader.h"
#include "Qpdf.h"

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

// Paints a picture into the unit square of a space. A pixel of the page is the mean of the samples whose middle lies in
// it, or the nearest sample if there is none. An upright picture has the whole pixels next to its edges, one at least.
// @param picture a stream. @param resources give its colour space a meaning. @param clip the pixels that matter.
// @return of a stencil no image, but what it lets the current colour paint.
[[nodiscard]] PlacedImage PlacePicture(QPDFObjectHandle picture, QPDFObjectHandle resources, const Matrix& toDevice,
                                       const Pixels& clip, PictureCache& pictures, Notes& notes);

// Paints a shading of type 1, 2 or 3; of another kind, with a note, its background alone.
// @param resources give its colour space a meaning. @param toDevice from the shading's space.
// @param clip the pixels that matter. @param withBackground whether its background counts, as it does in patterns.
[[nodiscard]] PlacedImage PaintShading(QPDFObjectHandle shading, QPDFObjectHandle resources, const Matrix& toDevice,
                                       const Pixels& clip, bool withBackground, Notes& notes);

}  // namespace pdf
