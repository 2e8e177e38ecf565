#pragma once

#include <vantu/Geometry.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace pdf {

// A point of a page or of any space that a matrix leads to.
struct PointD {
    double x = 0;
    double y = 0;
};

// A rectangle in real numbers.
using Box = vantu::Range<double, 2>;

// Pixels: columns x0 to x1 and rows y0 to y1, the ends outside.
using Pixels = vantu::Range<int, 2>;

template <typename Number>
bool IsEmpty(const vantu::Range<Number, 2>& range) {
    return !(range.x0 < range.x1 && range.y0 < range.y1);
}

template <typename Number>
vantu::Range<Number, 2> Intersect(const vantu::Range<Number, 2>& a, const vantu::Range<Number, 2>& b) {
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}

inline int Width(const Pixels& range) {
    return range.x1 - range.x0;
}
inline int Height(const Pixels& range) {
    return range.y1 - range.y0;
}

// An affine map, numbered as PDF does it: x' = a x + c y + e, y' = b x + d y + f.
struct Matrix {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double e = 0;
    double f = 0;

    [[nodiscard]] PointD Map(const PointD& p) const { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }

    [[nodiscard]] double Determinant() const { return a * d - b * c; }

    // Whether an inverse exists and can be computed with.
    [[nodiscard]] bool IsInvertible() const {
        const double determinant = Determinant();
        return std::isfinite(determinant) && std::isfinite(e) && std::isfinite(f) && std::abs(determinant) > 1e-30;
    }

    // REQUIRES: IsInvertible().
    [[nodiscard]] Matrix Inverse() const {
        const double q = 1 / Determinant();
        return {d * q, -b * q, -c * q, a * q, (c * f - d * e) * q, (b * e - a * f) * q};
    }

    // By how much lengths grow on average.
    [[nodiscard]] double Scale() const { return std::sqrt(std::abs(Determinant())); }
};

// The map that does `first` and then `second`.
inline Matrix Concat(const Matrix& first, const Matrix& second) {
    const PointD origin = second.Map({first.e, first.f});
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            origin.x,
            origin.y};
}

// The smallest upright rectangle around the image of a rectangle.
inline Box MapBox(const Matrix& matrix, const Box& box) {
    const PointD corners[] = {matrix.Map({box.x0, box.y0}), matrix.Map({box.x1, box.y0}), matrix.Map({box.x0, box.y1}),
                              matrix.Map({box.x1, box.y1})};
    Box out{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
    for (const PointD& corner : corners) {
        out.x0 = std::min(out.x0, corner.x);
        out.y0 = std::min(out.y0, corner.y);
        out.x1 = std::max(out.x1, corner.x);
        out.y1 = std::max(out.y1, corner.y);
    }
    return out;
}

// Whether upright rectangles stay so.
inline bool IsUpright(const Matrix& matrix) {
    return (matrix.b == 0 && matrix.c == 0) || (matrix.a == 0 && matrix.d == 0);
}

// The whole numbers next to both ends of an interval; of one that has no two of them, those around it.
inline void Snap(double& low, double& high) {
    const double before = std::floor(low);
    low = std::round(low);
    high = std::round(high);
    if (low < high) return;
    low = before;
    high = before + 1;
}

inline Box Snapped(Box box) {
    Snap(box.x0, box.x1);
    Snap(box.y0, box.y1);
    return box;
}

// What takes an upright rectangle to another one.
inline Matrix Between(const Box& from, const Box& to) {
    const double scaleX = (to.x1 - to.x0) / (from.x1 - from.x0);
    const double scaleY = (to.y1 - to.y0) / (from.y1 - from.y0);
    return {scaleX, 0, 0, scaleY, to.x0 - from.x0 * scaleX, to.y0 - from.y0 * scaleY};
}

// The nearest number of a pixel edge, also of numbers that an int cannot hold; not a number counts as 0.
inline int ToInt(double value) {
    constexpr double kMost = std::numeric_limits<int>::max() / 4;
    return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -kMost, kMost));
}

// The pixels that a box in device space touches.
inline Pixels Around(const Box& box) {
    return {ToInt(std::floor(box.x0)), ToInt(std::floor(box.y0)), ToInt(std::ceil(box.x1)), ToInt(std::ceil(box.y1))};
}

}  // namespace pdf
