#include <cstring>

#include "Images.h"
#include "Interpreter.h"
#include "Objects.h"

namespace pdf {

namespace {

// Tiles of so many pixels are painted one by one, others as copies of one.
constexpr double kLeastPaintedArea = 48 * 48;
constexpr double kLeastBlendingArea = 4 * 4;
constexpr double kMostOverlappingTiles = 400;
constexpr double kMostPixelsOfTile = 1 << 22;
constexpr unsigned int kBytesPerPixel = 4;

// A pattern's tiles: copies of its box, moved by multiples of its steps.
struct Lattice {
    Box box;
    PointD step;

    // The numbers of the tiles that may touch an area, from the first to behind the last.
    [[nodiscard]] Box TilesIn(const Box& area) const {
        return {std::floor((area.x0 - box.x1) / step.x) + 1, std::floor((area.y0 - box.y1) / step.y) + 1,
                std::ceil((area.x1 - box.x0) / step.x), std::ceil((area.y1 - box.y0) / step.y)};
    }
};

double Count(const Box& tiles) {
    return (tiles.x1 - tiles.x0) * (tiles.y1 - tiles.y0);
}

// x modulo n, from 0 to below n
int Modulo(double x, int n) {
    const double whole = std::floor(x);
    return static_cast<int>(whole - std::floor(whole / n) * n);
}

}  // namespace

void Interpreter::PaintTiles(const Mask& mask, const Ink& ink) {
    const Matrix& toDevice = ink.patternToDevice;
    const Lattice lattice{
        ToBox(Entry(ink.pattern, "/BBox"), {}),
        {std::abs(ToNumber(Entry(ink.pattern, "/XStep"), 0)), std::abs(ToNumber(Entry(ink.pattern, "/YStep"), 0))}};
    if (!QPDFObjectHandle(ink.pattern).isStream() || !toDevice.IsInvertible() || IsEmpty(lattice.box) ||
        !(lattice.step.x > 0) || !(lattice.step.y > 0)) {
        page_.notes.Add("a tiling pattern without tiles");
        return;
    }
    const Pixels& area = mask.box;
    // A pixel more on each side: tiles are moved by less.
    const Box around{area.x0 - 1.0, area.y0 - 1.0, area.x1 + 1.0, area.y1 + 1.0};
    const Box tiles = lattice.TilesIn(MapBox(toDevice.Inverse(), around));
    const bool colorless = ToInteger(Entry(ink.pattern, "/PaintType"), 1) == 2;
    const auto paintTiles = [&](Canvas& canvas, const Box& numbers, const Matrix& matrix, const Pixels& visible) {
        GraphicsState state{{}, {visible, nullptr}};
        if (colorless && ink.space->underlying) state.fill = state.stroke = Ink{ink.space->underlying, ink.components};
        Interpreter tile(page_, canvas, resources_, state, colorless);
        // Where tiles touch each other their edges are laid between pixels, so that there are no seams.
        const Box& box = lattice.box;
        const Box cell{box.x0, box.y0, box.x0 + lattice.step.x, box.y0 + lattice.step.y};
        const bool touch = IsUpright(matrix) && (cell.x1 <= box.x1 || cell.y1 <= box.y1);
        for (double row = numbers.y0; row < numbers.y1; ++row) {
            for (double column = numbers.x0; column < numbers.x1; ++column) {
                state.toDevice = Concat({1, 0, 0, 1, column * lattice.step.x, row * lattice.step.y}, matrix);
                const Box exact = MapBox(state.toDevice, cell);
                if (touch) state.toDevice = Concat(state.toDevice, Between(exact, Snapped(exact)));
                tile.PaintContentOf(ink.pattern, state);
            }
        }
    };
    const double across = lattice.step.x * std::hypot(toDevice.a, toDevice.b);
    const double down = lattice.step.y * std::hypot(toDevice.c, toDevice.d);
    // Tiles blend with what lies below them, too.
    const bool blends = page_.blendModes.In(ink.pattern).any();
    if (across * down >= (blends ? kLeastBlendingArea : kLeastPaintedArea)) {
        const Placing asAWhole = PlacingOf(ink);
        BeginGroup(mask, !blends, false);
        paintTiles(canvas_, tiles, toDevice, area);
        canvas_.EndGroup(asAWhole);
        return;
    }

    // One period of the pattern as a picture of whole pixels; each pixel of the area is looked up there.
    const double columns = std::max(1.0, std::round(across));
    const double rows = std::max(1.0, std::round(down));
    const Box overlapping = lattice.TilesIn({0, 0, lattice.step.x, lattice.step.y});
    if (!(columns * rows <= kMostPixelsOfTile && Count(overlapping) <= kMostOverlappingTiles)) {
        page_.notes.Add("a tiling pattern of too many pixels");
        return;
    }
    const Pixels period{0, 0, static_cast<int>(columns), static_cast<int>(rows)};
    const Matrix toPeriod{columns / lattice.step.x, 0, 0, rows / lattice.step.y, 0, 0};
    const auto tile = MakeImage(period);
    Canvas tileCanvas(tile, period, page_.calls);
    paintTiles(tileCanvas, overlapping, toPeriod, period);

    const auto picture = MakeImage(area);
    const Matrix fromDevice = Concat(toDevice.Inverse(), toPeriod);
    unsigned char* pixel = picture->GetPixelData();
    for (int y = area.y0; y < area.y1; ++y) {
        for (int x = area.x0; x < area.x1; ++x, pixel += kBytesPerPixel) {
            const PointD place = fromDevice.Map({x + 0.5, y + 0.5});
            const int index = Modulo(place.y, period.y1) * period.x1 + Modulo(place.x, period.x1);
            std::memcpy(pixel, tile->GetPixelData() + static_cast<std::size_t>(index) * kBytesPerPixel, kBytesPerPixel);
        }
    }
    canvas_.Draw(picture, {area.x0, area.y0}, mask, PlacingOf(ink));
}

}  // namespace pdf
