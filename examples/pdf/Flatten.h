#pragma once

#include <vector>

#include "Geometry.h"
#include "Path.h"

namespace pdf {

// A line through one point or more, of which no two neighbours are the same.
struct Polyline {
    std::vector<PointD> points;
    bool closed = false;
};

// The lines of a path after a matrix, curves as lines that stray less than a twentieth of a unit from them. Coordinates
// are kept within a thousand million. A lone move gives no line.
[[nodiscard]] std::vector<Polyline> Flatten(const Path& path, const Matrix& matrix);

}  // namespace pdf
