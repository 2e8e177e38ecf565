#pragma once

namespace vantu {

/// A point of `Dimensions` coordinates.
template <typename T, int Dimensions>
struct Point;

/// A box of `Dimensions` axes.
template <typename T, int Dimensions>
struct Range;

/// A position in pixels: x counts from the left, y from the visual top.
template <typename T>
struct Point<T, 2> {
    T x;  ///< to the right
    T y;  ///< downward
};

/// A rectangle in pixels: left, top, right, bottom. `x1` and `y1` are exclusive, so the width is `x1 - x0`.
template <typename T>
struct Range<T, 2> {
    T x0;  ///< left edge, the first column inside
    T y0;  ///< top edge, the first row inside
    T x1;  ///< right edge, the first column outside
    T y1;  ///< bottom edge, the first row outside
};

}  // namespace vantu
