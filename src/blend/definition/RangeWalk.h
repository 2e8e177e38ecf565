#pragma once

#include <algorithm>
#include <cstdint>

#include "blend/definition/BlendRequest.h"

namespace vantu {

/// A rectangle that a pixel loop paints: its place in the target, its place in the source, its size.
struct PaintArea {
    int targetX;
    int targetY;
    int sourceX;
    int sourceY;
    unsigned int width;
    unsigned int height;
};

/// Walks the ranges of a request in list order and splits each around the mask's rectangle.
///
/// Without a mask, or where a range misses it, `loops.Rect(area)` paints the range: the target at the range itself, the
/// source at the range plus the offset. Around a mask up to four unmasked strips (top, bottom, left, right) and then
/// `loops.Masked(area, maskX, maskY)` paint it: there the target is at the range plus the offset and the source at the
/// range. Coordinates wrap in 32 bits.
template <typename Loops>
void WalkRanges(const BlendRequestBase& request, Loops& loops) {
    const auto u = [](int value) { return static_cast<std::uint32_t>(value); };
    const auto s = [](std::uint32_t value) { return static_cast<std::int32_t>(value); };
    const auto paint = [&](int tx, int ty, int sx, int sy, std::uint32_t width, std::uint32_t height) {
        if (width != 0 && height != 0) loops.Rect(PaintArea{tx, ty, sx, sy, width, height});
    };
    // An extent lies on one side of 0 or is none: a range that starts before 0 misses a mask that reaches over 0, and
    // one that starts at or after 0 misses a mask that ends before it.
    const auto extent = [&](int start, int end) {
        return (start < 0) == (end < 0) && start < end ? u(end) - u(start) : 0;
    };
    const std::uint32_t ox = u(request.offset->x);
    const std::uint32_t oy = u(request.offset->y);
    const IQorImage* const mask = request.mask->get();

    for (const Range<int, 2>& range : request.coverage->GetRanges()) {
        const int x0 = range.x0, y0 = range.y0, x1 = range.x1, y1 = range.y1;
        const std::uint32_t width = u(x1) - u(x0);
        const std::uint32_t height = u(y1) - u(y0);
        const auto paintUnmasked = [&] { paint(x0, y0, s(u(x0) + ox), s(u(y0) + oy), width, height); };
        if (mask == nullptr) {
            paintUnmasked();
            continue;
        }

        const int mx = request.maskOffset->x;
        const int my = request.maskOffset->y;
        const int maskEndX = s(u(mx) + mask->GetWidth());
        const int maskEndY = s(u(my) + mask->GetHeight());
        const auto [left, right] = std::minmax({mx, maskEndX});
        const auto [top, bottom] = std::minmax({my, maskEndY});
        const std::uint32_t gapLeft = x0 < left ? u(left) - u(x0) : 0;
        const std::uint32_t gapTop = y0 < top ? u(top) - u(y0) : 0;
        const std::uint32_t cx = u(x0) + gapLeft;
        const std::uint32_t cy = u(y0) + gapTop;
        const std::uint32_t cw = extent(s(cx), std::min(x1, right));
        const std::uint32_t ch = extent(s(cy), std::min(y1, bottom));
        if (cw == 0 || ch == 0) {
            paintUnmasked();
            continue;
        }

        // A piece of the range whose first pixel is at (x, y): the target is displaced by the offset.
        const auto paintPiece = [&](std::uint32_t x, std::uint32_t y, std::uint32_t w, std::uint32_t h) {
            paint(s(x + ox), s(y + oy), s(x), s(y), w, h);
        };
        if (gapTop != 0) paintPiece(u(x0), u(y0), width, gapTop);
        if (u(y1) > u(bottom)) paintPiece(u(x0), cy + ch, width, u(y1) - u(bottom));
        if (gapLeft != 0) paintPiece(u(x0), cy, gapLeft, ch);
        if (u(x1) > u(right)) paintPiece(cx + cw, cy, u(x1) - u(right), ch);

        const unsigned int maskX = x0 > left ? u(x0) - u(left) : 0;
        const unsigned int maskY = y0 > top ? u(y0) - u(top) : 0;
        loops.Masked(PaintArea{s(cx + ox), s(cy + oy), s(cx), s(cy), cw, ch}, maskX, maskY);
    }
}

}  // namespace vantu
