#include "Outlines.h"

#include <agg_conv_dash.h>
#include <agg_conv_stroke.h>
#include <agg_path_length.h>
#include <agg_path_storage.h>
#include <agg_rasterizer_scanline_aa.h>

#include <cstddef>
#include <numeric>

#include "Flatten.h"

namespace pdf {

namespace {

constexpr double kFarthest = 32000;             // pixels; what AGG's cells can count, with room to spare
constexpr unsigned int kMostCellBlocks = 4096;  // of 4096 pixels that edges cross; AGG drops what goes beyond
constexpr double kMostDashes = 100000;
constexpr std::size_t kMostDashLengths = 32;  // what AGG holds
constexpr double kDot = 1e-3;                 // pixels; a dash of no length still has caps

// Gathers the edges of polygons, all in device space, and counts what they cover.
class Rasterizer {
public:
    explicit Rasterizer(const Pixels& clip) : clip_(clip) {
        cells_.clip_box(-kFarthest, -kFarthest, kFarthest, kFarthest);
    }

    void MoveTo(const PointD& to) {
        Close();
        start_ = at_ = to;
    }
    void LineTo(const PointD& to) {
        AddEdge(at_, to);
        at_ = to;
    }
    void Close() { LineTo(start_); }

    [[nodiscard]] Mask Sweep(bool evenOdd) {
        cells_.filling_rule(evenOdd ? agg::fill_even_odd : agg::fill_non_zero);
        Mask mask = MakeMask(Intersect(clip_, Around(bounds_)));
        if (!mask.image || !cells_.rewind_scanlines()) return {};
        bool isFull = true;
        for (int y = mask.box.y0; y < mask.box.y1; ++y) {
            Row row{mask.box.x0, mask.box.x1, RowOf(mask, y)};
            if (cells_.navigate_scanline(y)) cells_.sweep_scanline(row);
            isFull =
                isFull && std::all_of(row.coverage, row.coverage + Width(mask.box), [](int c) { return c == 255; });
        }
        if (isFull) mask.image = nullptr;
        return mask;
    }

private:
    // What AGG calls a scanline: here it writes into the mask at once.
    struct Row {
        int x0;
        int x1;
        unsigned char* coverage;

        void reset_spans() {}
        void finalize(int) {}
        [[nodiscard]] static unsigned int num_spans() { return 1; }  // one call sweeps one row, also if it is empty
        void add_cell(int x, unsigned int cover) { add_span(x, 1, cover); }
        void add_span(int x, unsigned int count, unsigned int cover) {
            const int from = std::max(x, x0);
            const int to = std::min(x + static_cast<int>(count), x1);
            if (from < to) std::fill(coverage + (from - x0), coverage + (to - x0), static_cast<unsigned char>(cover));
        }
    };

    // An edge counts for its own rows alone, and a pixel there only asks how much of the row's height lies to its left.
    // So edges above and below the clip are left out, those beside it are laid upright: no pixel inside changes.
    void AddEdge(PointD from, PointD to) {
        if (from.y == to.y) return;
        bounds_ = {std::min({bounds_.x0, from.x, to.x}), std::min({bounds_.y0, from.y, to.y}),
                   std::max({bounds_.x1, from.x, to.x}), std::max({bounds_.y1, from.y, to.y})};
        if (std::max(from.y, to.y) < clip_.y0 || std::min(from.y, to.y) > clip_.y1) return;
        if (std::max(from.x, to.x) < clip_.x0) from.x = to.x = clip_.x0 - 1;
        if (std::min(from.x, to.x) > clip_.x1) from.x = to.x = clip_.x1 + 1;
        cells_.edge_d(from.x, from.y, to.x, to.y);
    }

    Pixels clip_;
    Box bounds_{kFarthest, kFarthest, -kFarthest, -kFarthest};  // of the edges
    agg::rasterizer_scanline_aa<agg::rasterizer_sl_clip_dbl> cells_{kMostCellBlocks};
    PointD start_;
    PointD at_;
};

// Gives the outline of a stroke, an AGG vertex source, to a rasteriser.
template <typename Source>
void AddOutline(Source& source, const Matrix& toDevice, Rasterizer& rasterizer) {
    PointD at;
    source.rewind(0);
    while (true) {
        const unsigned int command = source.vertex(&at.x, &at.y);
        if (agg::is_stop(command)) break;
        if (!agg::is_vertex(command)) continue;
        if (agg::is_move_to(command))
            rasterizer.MoveTo(toDevice.Map(at));
        else
            rasterizer.LineTo(toDevice.Map(at));
    }
    rasterizer.Close();
}

template <typename Source>
void AddStroke(Source& source, const StrokeStyle& style, const Matrix& toDevice, Rasterizer& rasterizer) {
    constexpr agg::line_cap_e kCaps[] = {agg::butt_cap, agg::round_cap, agg::square_cap};
    constexpr agg::line_join_e kJoins[] = {agg::miter_join_revert, agg::round_join, agg::bevel_join};
    agg::conv_stroke<Source> stroke(source);
    stroke.width(style.width);
    stroke.line_cap(kCaps[static_cast<std::size_t>(style.cap)]);
    stroke.line_join(kJoins[static_cast<std::size_t>(style.join)]);
    stroke.inner_join(agg::inner_round);
    stroke.miter_limit(std::max(style.miterLimit, 1.0));
    stroke.approximation_scale(std::min(1.0, 4 * kFarthest / style.width));
    AddOutline(stroke, toDevice, rasterizer);
}

// Lengths of dashes and gaps in turn, in pixels; none for a solid line.
std::vector<double> DashesInPixels(const StrokeStyle& style, double scale, double lineLength) {
    std::vector<double> dashes;
    for (const double length : style.dashes)
        dashes.push_back(std::isfinite(length) ? std::clamp(length * scale, 0.0, 1e9) : 0);
    if (dashes.size() % 2 != 0) dashes.insert(dashes.end(), dashes.begin(), dashes.end());
    if (dashes.size() > kMostDashLengths) dashes.resize(kMostDashLengths);
    const double period = std::accumulate(dashes.begin(), dashes.end(), 0.0);
    const double count = static_cast<double>(dashes.size()) / 2 * lineLength;
    if (!(period > kDot) || count > kMostDashes * period) return {};
    for (double& length : dashes) length = std::max(length, kDot);
    return dashes;
}

// A closed line of which less than a triangle is left goes there and back; a point gets a length, so that it has caps.
void OpenIfFlat(Polyline& line) {
    if (line.points.size() == 1)
        line.points.push_back({line.points[0].x + kDot, line.points[0].y});
    else if (line.closed && line.points.size() == 2)
        line.points.push_back(line.points[0]);
    else
        return;
    line.closed = false;
}

// Whether all pieces of a line are horizontal or vertical.
bool IsUprightLine(const Polyline& line) {
    const auto isSlanting = [](const PointD& a, const PointD& b) {
        return std::min(std::abs(a.x - b.x), std::abs(a.y - b.y)) > kDot;
    };
    return std::ranges::adjacent_find(line.points, isSlanting) == line.points.end() &&
           !(line.closed && isSlanting(line.points.front(), line.points.back()));
}

agg::path_storage ToAgg(const std::vector<Polyline>& lines) {
    agg::path_storage storage;
    for (const Polyline& line : lines) {
        storage.move_to(line.points[0].x, line.points[0].y);
        for (std::size_t i = 1; i < line.points.size(); ++i) storage.line_to(line.points[i].x, line.points[i].y);
        if (line.closed) storage.close_polygon();
    }
    return storage;
}

}  // namespace

Mask FillCoverage(const Path& path, const Matrix& toDevice, bool evenOdd, const Pixels& clip) {
    Rasterizer rasterizer(clip);
    for (const Polyline& line : Flatten(path, toDevice)) {
        rasterizer.MoveTo(line.points[0]);
        for (const PointD& point : line.points) rasterizer.LineTo(point);
    }
    rasterizer.Close();
    return rasterizer.Sweep(evenOdd);
}

Mask StrokeCoverage(const Path& path, const Matrix& toDevice, const StrokeStyle& style, double thinnest,
                    const Pixels& clip) {
    const double scale = toDevice.Scale();
    if (!toDevice.IsInvertible()) return {};
    // The line is widened where it is as large as on the page, but not yet turned or slanted: there lengths are pixels.
    const Matrix toPixels{scale, 0, 0, scale, 0, 0};
    const Matrix rest = Concat(toPixels.Inverse(), toDevice);
    StrokeStyle inPixels = style;

    std::vector<Polyline> lines = Flatten(path, toPixels);
    const bool isUpright = IsUpright(toDevice) && std::ranges::all_of(lines, IsUprightLine);
    const bool hasWidth = std::isfinite(style.width) && style.width > 0;
    inPixels.width = hasWidth ? std::clamp(style.width * scale, isUpright ? 1 : thinnest, 1e9) : 1;
    // A point has caps if they are round; others would have no direction.
    if (style.cap != LineCap::Round) std::erase_if(lines, [](const Polyline& line) { return line.points.size() == 1; });
    for (Polyline& line : lines) OpenIfFlat(line);
    agg::path_storage storage = ToAgg(lines);
    Rasterizer rasterizer(clip);
    const std::vector<double> dashes = DashesInPixels(style, scale, agg::path_length(storage));
    if (dashes.empty()) {
        AddStroke(storage, inPixels, rest, rasterizer);
    } else {
        const double period = std::accumulate(dashes.begin(), dashes.end(), 0.0);
        const double phase = std::isfinite(style.phase) ? std::fmod(style.phase * scale, period) : 0;
        agg::conv_dash<agg::path_storage> dashed(storage);
        for (std::size_t i = 0; i < dashes.size(); i += 2) dashed.add_dash(dashes[i], dashes[i + 1]);
        dashed.dash_start(phase < 0 ? phase + period : phase);
        AddStroke(dashed, inPixels, rest, rasterizer);
    }
    return rasterizer.Sweep(false);
}

}  // namespace pdf
