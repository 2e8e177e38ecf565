#pragma once

#include <vector>

#include "Geometry.h"

namespace pdf {

// Lines and curves as the path operators of a page say them, in the coordinates of whoever builds the path.
struct Path {
    enum class Step : unsigned char { Move, Line, Curve, Close };  // they take 1, 1, 3 and 0 points

    std::vector<Step> steps;
    std::vector<PointD> points;
    PointD start;    // of the subpath that is open
    PointD current;  // where the next step begins

    [[nodiscard]] bool IsEmpty() const { return steps.empty(); }

    void MoveTo(const PointD& to) {
        start = to;
        Add(Step::Move, {to});
    }
    void LineTo(const PointD& to) { Add(Step::Line, {to}); }
    void CurveTo(const PointD& first, const PointD& second, const PointD& to) { Add(Step::Curve, {first, second, to}); }
    void Close() {
        steps.push_back(Step::Close);
        current = start;
    }
    void AddRectangle(const Box& box) {
        MoveTo({box.x0, box.y0});
        LineTo({box.x1, box.y0});
        LineTo({box.x1, box.y1});
        LineTo({box.x0, box.y1});
        Close();
    }
    // Adds another path, moved by a matrix.
    void Append(const Path& other, const Matrix& matrix) {
        steps.insert(steps.end(), other.steps.begin(), other.steps.end());
        for (const PointD& point : other.points) points.push_back(matrix.Map(point));
    }

private:
    void Add(Step step, std::initializer_list<PointD> to) {
        steps.push_back(step);
        points.insert(points.end(), to);
        current = points.back();
    }
};

}  // namespace pdf
