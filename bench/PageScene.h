#pragma once

#include <vantu/CQorImage.h>
#include <vantu/Painter.h>

#include <functional>
#include <memory>
#include <vector>

namespace vantu::bench {

/// A call that paints in rectangles of a page. All positions are the page's.
struct PageCall {
    std::shared_ptr<IQorImage> picture;     ///< 32-bit premultiplied
    bool isColor = false;                   ///< what is painted has the colour of the picture's first pixel
    Point<int, 2> at{0, 0};                 ///< where the picture's top left corner lies
    std::vector<Range<int, 2>> rectangles;  ///< inside the page and, if it has one, the mask
    Paint paint;
};

/// A page of 32-bit premultiplied pixels, and calls that paint on it.
struct PageScene {
    std::shared_ptr<CQorImage> page;
    std::vector<unsigned char> pristine;  ///< what the page looks like before
    std::vector<PageCall> calls;

    void Restore() const;
    [[nodiscard]] std::size_t CountPixels() const;
};

/// Paints all calls by `IPDFImageBlender::Blend`. REQUIRES: the rectangles lie inside the pictures.
std::function<void()> MakeBlendReplay(const PageScene& scene);
/// Paints all calls by the plain loop.
std::function<void()> MakeScalarReplay(const PageScene& scene);

}  // namespace vantu::bench
