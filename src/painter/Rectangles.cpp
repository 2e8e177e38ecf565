#include "painter/Rectangles.h"

namespace vantu {
namespace {

bool SameRows(const Rectangle& a, const Rectangle& b) {
    return a.y0 == b.y0 && a.y1 == b.y1;
}

/// Appends the band of the rows from `top` to `bottom` that all of `crossing` cross, given from left to right. A band
/// that continues the one which starts at `last` makes that longer instead. @return where the last band starts.
std::size_t AppendBand(Bands& bands, std::size_t last, int top, int bottom, std::span<const Rectangle> crossing) {
    const std::size_t start = bands.size();
    for (const Rectangle& r : crossing) {
        if (bands.size() > start && r.x0 <= bands.back().x1) {
            bands.back().x1 = std::max(bands.back().x1, r.x1);
        } else {
            bands.push_back({r.x0, top, r.x1, bottom});
        }
    }
    const auto before = std::span(bands).subspan(last, start - last);
    const auto band = std::span(bands).subspan(start);
    const bool continues = std::ranges::equal(before, band, [](const Rectangle& a, const Rectangle& b) {
        return a.y1 == b.y0 && a.x0 == b.x0 && a.x1 == b.x1;
    });
    if (!continues) return start;
    for (Rectangle& r : before) r.y1 = bottom;
    bands.resize(start);
    return last;
}

}  // namespace

Rectangle BoundingBox(std::span<const Rectangle> rectangles) {
    Rectangle box{};
    for (const Rectangle& r : rectangles) box = Union(box, r);
    return box;
}

bool AreBands(std::span<const Rectangle> rectangles) {
    for (std::size_t i = 0; i < rectangles.size(); ++i) {
        const Rectangle& r = rectangles[i];
        if (IsEmpty(r)) return false;
        if (i == 0) continue;
        const Rectangle& before = rectangles[i - 1];
        const bool follows = SameRows(before, r) ? before.x1 <= r.x0 : before.y1 <= r.y0;
        if (!follows) return false;
    }
    return true;
}

Bands ToBands(std::span<const Rectangle> rectangles) {
    std::vector<Rectangle> waiting;
    std::vector<int> edges;
    for (const Rectangle& r : rectangles) {
        if (IsEmpty(r)) continue;
        waiting.push_back(r);
        edges.insert(edges.end(), {r.y0, r.y1});
    }
    std::ranges::sort(edges);
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    std::ranges::sort(waiting, {}, &Rectangle::y0);

    Bands bands;
    std::vector<Rectangle> crossing;
    auto next = waiting.begin();
    std::size_t last = 0;
    for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
        const int top = edges[i];
        std::erase_if(crossing, [top](const Rectangle& r) { return r.y1 <= top; });
        for (; next != waiting.end() && next->y0 == top; ++next) {
            crossing.insert(std::ranges::upper_bound(crossing, next->x0, {}, &Rectangle::x0), *next);
        }
        if (!crossing.empty()) last = AppendBand(bands, last, top, edges[i + 1], crossing);
    }
    return bands;
}

void AppendIntersection(const Bands& bands, const Rectangle& rectangle, std::vector<Rectangle>& out) {
    auto band = std::ranges::upper_bound(bands, rectangle.y0, {}, &Rectangle::y1);
    for (; band != bands.end() && band->y0 < rectangle.y1; ++band) {
        const Rectangle shared = Intersection(*band, rectangle);
        if (!IsEmpty(shared)) out.push_back(shared);
    }
}

}  // namespace vantu
