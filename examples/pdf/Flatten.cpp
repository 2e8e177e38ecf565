#include "Flatten.h"

#include <cstddef>

namespace pdf {

namespace {

constexpr double kFarthest = 1e9;
constexpr double kTolerance = 0.05;
constexpr int kMostLines = 1000;  // of one curve

double Tame(double value) {
    return std::isnan(value) ? 0 : std::clamp(value, -kFarthest, kFarthest);
}

PointD Tame(const PointD& point) {
    return {Tame(point.x), Tame(point.y)};
}

void Append(Polyline& line, const PointD& to) {
    if (line.points.back().x != to.x || line.points.back().y != to.y) line.points.push_back(to);
}

double SecondDifference(const PointD& p, const PointD& q, const PointD& r) {
    return std::hypot(p.x - 2 * q.x + r.x, p.y - 2 * q.y + r.y);
}

// n chords of equal parameter stray from a curve by at most max|B''| / (8 n^2), and max|B''| is 6 times the larger
// second difference of the control points, so n = sqrt(6 / 8 difference / tolerance).
void AppendCurve(Polyline& line, const PointD& p1, const PointD& p2, const PointD& p3) {
    const PointD p0 = line.points.back();
    const double difference = std::max(SecondDifference(p0, p1, p2), SecondDifference(p1, p2, p3));
    const int count = 1 + static_cast<int>(std::min(std::sqrt(0.75 * difference / kTolerance), kMostLines - 1.0));
    for (int i = 1; i < count; ++i) {
        const double t = static_cast<double>(i) / count;
        const double s = 1 - t;
        const double b0 = s * s * s;
        const double b1 = 3 * s * s * t;
        const double b2 = 3 * s * t * t;
        const double b3 = t * t * t;
        Append(line, {b0 * p0.x + b1 * p1.x + b2 * p2.x + b3 * p3.x, b0 * p0.y + b1 * p1.y + b2 * p2.y + b3 * p3.y});
    }
    Append(line, p3);
}

}  // namespace

std::vector<Polyline> Flatten(const Path& path, const Matrix& matrix) {
    std::vector<Polyline> lines;
    Polyline line;
    bool drawn = false;
    const auto finish = [&] {
        if (drawn) lines.push_back(line);
        drawn = false;
    };
    std::size_t used = 0;
    const auto next = [&] { return Tame(matrix.Map(path.points[used++])); };
    for (const Path::Step step : path.steps) {
        if (step != Path::Step::Move && line.points.empty()) line.points.push_back({});  // a path that lacks its start
        switch (step) {
            case Path::Step::Move:
                finish();
                line = {{next()}, false};
                continue;
            case Path::Step::Line: Append(line, next()); break;
            case Path::Step::Curve: {
                const PointD first = next();
                const PointD second = next();
                AppendCurve(line, first, second, next());
                break;
            }
            case Path::Step::Close: {
                const PointD start = line.points.front();
                line.closed = true;
                if (line.points.size() > 1 && start.x == line.points.back().x && start.y == line.points.back().y)
                    line.points.pop_back();
                lines.push_back(line);
                line = {{start}, false};
                drawn = false;
                continue;
            }
        }
        drawn = true;
    }
    finish();
    return lines;
}

}  // namespace pdf
