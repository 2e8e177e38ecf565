#pragma once

#include <memory>

#include "Geometry.h"
#include "Mask.h"
#include "Notes.h"
#include "PictureReader.h"
#include "Qpdf.h"

namespace pdf {

// A picture on the pixels of a page.
struct PlacedPicture {
    Mask coverage;                            // its outline; of a stencil, what it lets the current colour paint
    std::shared_ptr<vantu::IQorImage> image;  // Bgra32Premultiplied, top-down, as large as the coverage's box; null for
                                              // a stencil, and where there is nothing to paint
};

// Paints a picture into the unit square of a space. A pixel of the page is the mean of the samples whose middle lies in
// it, or the nearest sample if there is none. An upright picture has the whole pixels next to its edges, one at least.
// @param picture a stream. @param resources give its colour space a meaning. @param clip the pixels that matter.
[[nodiscard]] PlacedPicture PlacePicture(QPDFObjectHandle picture, QPDFObjectHandle resources, const Matrix& toDevice,
                                         const Pixels& clip, PictureCache& pictures, Notes& notes);

}  // namespace pdf
