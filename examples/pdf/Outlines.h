#pragma once

#include <vector>

#include "Geometry.h"
#include "Mask.h"
#include "Path.h"

namespace pdf {

enum class LineCap : unsigned char { Butt, Round, Square };
enum class LineJoin : unsigned char { Miter, Round, Bevel };

// How a line is drawn. Lengths are in the coordinates of the path.
struct StrokeStyle {
    double width = 1;
    LineCap cap = LineCap::Butt;
    LineJoin join = LineJoin::Miter;
    double miterLimit = 10;
    std::vector<double> dashes;  // on, off, on ...; an odd number of lengths counts twice; empty for a solid line
    double phase = 0;
};

// The coverage within `clip` of what a path encloses. A pixel's coverage does not depend on the clip, so that bands of
// a page fit together. Device coordinates beyond 32,000 pixels are cut there.
[[nodiscard]] Mask FillCoverage(const Path& path, const Matrix& toDevice, bool evenOdd, const Pixels& clip);

// The same of a line along the path. One of no width is one pixel wide, one that is horizontal or vertical at least so.
// A line of more than 100,000 dashes is drawn solid.
// @param thinnest how many pixels wide any other line is at least.
[[nodiscard]] Mask StrokeCoverage(const Path& path, const Matrix& toDevice, const StrokeStyle& style, double thinnest,
                                  const Pixels& clip);

}  // namespace pdf
