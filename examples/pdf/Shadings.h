#pragma once

#include <vantu/IQorImage.h>

#include <memory>

#include "Geometry.h"
#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// What a shading paints on the pixels of a page: Bgra32Premultiplied, top-down, as large as the box.
struct ShadedImage {
    Pixels box{0, 0, 0, 0};
    std::shared_ptr<vantu::IQorImage> image;  // null if the box is empty
};

// Paints a shading of type 1, 2 or 3; of another kind, with a note, its background alone.
// @param resources give its colour space a meaning. @param toDevice from the shading's space. @param clip the box.
// @param withBackground whether its background counts, as it does in patterns.
[[nodiscard]] ShadedImage PaintShading(QPDFObjectHandle shading, QPDFObjectHandle resources, const Matrix& toDevice,
                                       const Pixels& clip, bool withBackground, Notes& notes);

}  // namespace pdf
