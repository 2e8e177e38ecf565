#pragma once

#include <vantu/CQorImage.h>
#include <vantu/Painter.h>

#include <functional>
#include <memory>
#include <vector>

namespace vantu::bench {

/// A call that paints on a page, or begins or ends an isolated group. All positions are the page's.
struct PageCall {
    enum class What { Paint, BeginGroup, EndGroup };

    What what = What::Paint;
    std::shared_ptr<IQorImage> picture;     ///< 32-bit premultiplied; of an EndGroup it is the group
    bool isColor = false;                   ///< what is painted has the colour of the picture's first pixel
    Point<int, 2> at{0, 0};                 ///< where the picture's top left corner lies
    std::vector<Range<int, 2>> rectangles;  ///< inside page and mask; of a BeginGroup the bounds of the group
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

/// What the page looks like after `paint`.
std::vector<unsigned char> Painted(const PageScene& scene, const std::function<void()>& paint);

/// Paints all calls by `IPDFImageBlender::Blend`.
/// REQUIRES: the rectangles lie inside the pictures, and there are no groups.
std::function<void()> MakeBlendReplay(const PageScene& scene);
/// Paints all calls by the plain loop.
std::function<void()> MakeScalarReplay(const PageScene& scene);

}  // namespace vantu::bench
