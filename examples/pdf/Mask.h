#pragma once

#include <vantu/IQorImage.h>

#include <memory>

#include "Geometry.h"

namespace pdf {

// Where on the page something is, and how much of each pixel: 8-bit samples with a grey ramp as palette, 0 outside, 255
// inside. Outside of `box` nothing is inside; without an image all of `box` is. Read only once it is made, so that
// graphics states may share it.
struct Mask {
    Pixels box{0, 0, 0, 0};
    std::shared_ptr<vantu::IQorImage> image;  // top-down, as large as `box`
};

// A mask of `box` with the samples 0.
Mask MakeMask(const Pixels& box);

// The first sample of a row of the page. REQUIRES: `mask` has an image and `y` is a row of its box.
unsigned char* RowOf(const Mask& mask, int y);

// The sample of a pixel of the page, also where the mask has none.
unsigned char SampleAt(const Mask& mask, int x, int y);

// What lies in both: round(a * b / 255) in each pixel.
Mask Intersect(const Mask& a, const Mask& b);

// The part of a fill through which it is painted before its stroke, so that the two are one object that shows the
// backdrop once: with f, s the two coverages and a the stroke's alpha, f (1 - s) / (1 - a s) in each pixel.
Mask UnderStroke(const Mask& fill, const Mask& stroke, double strokeAlpha);

// The mask with the samples raised that are below `least`.
Mask AtLeast(const Mask& mask, unsigned char least);

// The mask with each pixel inside or outside, as at least half of it is.
Mask HardEdged(const Mask& mask);

}  // namespace pdf
