#pragma once

#include "Images.h"
#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// Paints a shading of type 1, 2 or 3; of another kind, with a note, its background alone.
// @param resources give its colour space a meaning. @param toDevice from the shading's space.
// @param clip the pixels that matter. @param withBackground whether its background counts, as it does in patterns.
[[nodiscard]] PlacedImage PaintShading(QPDFObjectHandle shading, QPDFObjectHandle resources, const Matrix& toDevice,
                                       const Pixels& clip, bool withBackground, Notes& notes);

}  // namespace pdf
