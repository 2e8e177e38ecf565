#pragma once

#include "Images.h"
#include "Notes.h"
#include "PictureReader.h"
#include "Qpdf.h"

namespace pdf {

// Paints a picture into the unit square of a space. A pixel of the page is the mean of the samples whose middle lies in
// it, or the nearest sample if there is none. An upright picture has the whole pixels next to its edges, one at least.
// @param picture a stream. @param resources give its colour space a meaning. @param clip the pixels that matter.
// @return of a stencil no image, but what it lets the current colour paint.
[[nodiscard]] PlacedImage PlacePicture(QPDFObjectHandle picture, QPDFObjectHandle resources, const Matrix& toDevice,
                                       const Pixels& clip, PictureCache& pictures, Notes& notes);

}  // namespace pdf
