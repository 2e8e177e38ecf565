#pragma once

#include <vantu/Geometry.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace vantu {

using Rectangle = Range<int, 2>;

inline bool IsEmpty(const Rectangle& r) {
    return r.x0 >= r.x1 || r.y0 >= r.y1;
}

/// What two rectangles share; empty if they are apart.
inline Rectangle Intersection(const Rectangle& a, const Rectangle& b) {
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}

/// The smallest rectangle around two; that of the other one if one is empty.
inline Rectangle Union(const Rectangle& a, const Rectangle& b) {
    if (IsEmpty(a) || IsEmpty(b)) return IsEmpty(a) ? b : a;
    return {std::min(a.x0, b.x0), std::min(a.y0, b.y0), std::max(a.x1, b.x1), std::max(a.y1, b.y1)};
}

/// A picture's rectangle, as far as positions count.
inline Rectangle RectangleAt(const Point<int, 2>& at, unsigned int width, unsigned int height) {
    const auto end = [](int start, unsigned int length) {
        return static_cast<int>(std::min<std::int64_t>(std::int64_t{start} + length, std::numeric_limits<int>::max()));
    };
    return {at.x, at.y, end(at.x, width), end(at.y, height)};
}

/// The way from `b` to `a`, modulo 2^32, as positions are added to each other.
inline Point<int, 2> Difference(const Point<int, 2>& a, const Point<int, 2>& b) {
    return {static_cast<int>(std::int64_t{a.x} - b.x), static_cast<int>(std::int64_t{a.y} - b.y)};
}

/// A rectangle as it is counted from `origin`.
inline Rectangle Moved(const Rectangle& r, const Point<int, 2>& origin) {
    const auto [x0, y0] = Difference({r.x0, r.y0}, origin);
    const auto [x1, y1] = Difference({r.x1, r.y1}, origin);
    return {x0, y0, x1, y1};
}

/// The smallest rectangle around all; empty if there are none.
Rectangle BoundingBox(std::span<const Rectangle> rectangles);

/// Rectangles in bands: those of a band have the same rows and go from left to right without meeting, and the bands go
/// downward without overlapping.
using Bands = std::vector<Rectangle>;

/// Whether rectangles are bands as they stand.
bool AreBands(std::span<const Rectangle> rectangles);

/// Cuts the union of any rectangles into bands.
Bands ToBands(std::span<const Rectangle> rectangles);

/// Appends what bands and a rectangle share.
void AppendIntersection(const Bands& bands, const Rectangle& rectangle, std::vector<Rectangle>& out);

}  // namespace vantu
