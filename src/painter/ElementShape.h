#pragma once

#include <vantu/CQorImage.h>
#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>

#include <memory>
#include <vector>

#include "painter/Rectangles.h"

namespace vantu {

/// Cuts ranges into the runs of pixels that an element has there: the blender knows an element's shape by ranges alone.
///
/// REQUIRES everywhere: the ranges lie inside the image, whose top left corner is at `at` where they count from; the
/// image has pixels in memory.
class ElementShape {
public:
    /// Leaves out the clear pixels of a picture of format `Bgra32Premultiplied` or `Bgra32Inverted`.
    void CutToPicture(std::vector<Rectangle>& ranges, const IQorImage& picture, const Point<int, 2>& at);
    /// Leaves out the pixels that a 1-bit stencil protects, those of sample 1.
    void CutToStencil(std::vector<Rectangle>& ranges, const IQorImage& stencil, const Point<int, 2>& at);
    /// Leaves out the pixels to which a soft mask gives less than one of 255 steps of opacity.
    void CutToMask(std::vector<Rectangle>& ranges, const IQorImage& mask, const Point<int, 2>& at,
                   const IPDFTransferFunction& transfer);

private:
    template <typename MarkClear>
    void Cut(std::vector<Rectangle>& ranges, const Point<int, 2>& at, MarkClear markClear);

    std::vector<Rectangle> runs_;
    std::vector<unsigned char> has_;     ///< of each pixel of the piece of a row at hand: 1 if the element has it
    std::shared_ptr<CQorImage> colors_;  ///< such a piece of a mask as straight colours
};

}  // namespace vantu
