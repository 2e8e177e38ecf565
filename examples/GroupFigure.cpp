#include "GroupFigure.h"

#include <algorithm>
#include <cmath>

#include "Pictures.h"

namespace examples {

using namespace vantu;

namespace {

void PaintGroup(IPDFImageBlender& blender, const IQorImage& figure, const FigureSize& size, std::size_t number) {
    const GroupKind kind = kGroupKinds[number];
    const Range<int, 2> cell = size.CellOf(number);
    const std::shared_ptr<IQorImage> group = MakeGroupImage(figure, cell, kind.isolated);
    // An isolated group's image holds nothing but the group, so its end has nothing to take out.
    const bool keepBackdrop = kind.isolated;
    blender.BeginGroup(group, nullptr, kind.knockout, keepBackdrop, false);
    for (const Point<int, 2>& middle : size.Discs())
        PaintEllipse(blender, kDiscColor, middle, {size.radius, size.radius}, BlendMode::Multiply);
    blender.EndGroup();
    PaintAt(blender, group, {cell.x0, cell.y0}, 255, BlendMode::Normal);
}

}  // namespace

// channel = 1/3 + 2/3 * clamp(|(h + o) mod 6 - 3| - 1).
Color Rainbow(double position) {
    const auto channel = [hue = 5 * position](double origin) {
        const double pure = std::clamp(std::abs(std::fmod(hue + origin, 6.0) - 3) - 1, 0.0, 1.0);
        return static_cast<unsigned int>(std::lround(255 * (1 + 2 * pure) / 3));
    };
    return Color(ARGB_BLACK | channel(0) << 16 | channel(4) << 8 | channel(2));
}

Range<int, 2> FigureSize::CellOf(std::size_t kind) const {
    const int x = gap + static_cast<int>(kind % 2) * (cell + gap);
    const int y = gap + static_cast<int>(kind / 2) * (cell + gap);
    return {x, y, x + cell, y + cell};
}

std::array<Point<int, 2>, 4> FigureSize::Discs() const {
    const int near = cell / 2 - 5 * radius / 8;
    const int far = cell - near;
    return {{{near, near}, {far, near}, {near, far}, {far, far}}};
}

std::shared_ptr<CQorImage> MakeGradients(const FigureSize& size) {
    auto figure = MakeSheet(size.Side(), size.Side(), 0xFFFFFFFF);
    for (std::size_t number = 0; number < kGroupKinds.size(); ++number) {
        const Range<int, 2> cell = size.CellOf(number);
        for (int x = cell.x0; x < cell.x1; ++x)
            ImageUtil::Clear(*figure, Rainbow((x - cell.x0 + 0.5) / size.cell), {x, cell.y0, x + 1, cell.y1});
    }
    return figure;
}

void PaintGroups(const std::shared_ptr<IQorImage>& figure, const FigureSize& size) {
    const std::shared_ptr<IPDFImageBlender> blender = MakeBlender(figure);
    for (std::size_t number = 0; number < kGroupKinds.size(); ++number) PaintGroup(*blender, *figure, size, number);
}

std::shared_ptr<CQorImage> MakeGroupImage(const IQorImage& parent, const Range<int, 2>& area, bool isolated) {
    const auto width = static_cast<unsigned int>(area.x1 - area.x0);
    const auto height = static_cast<unsigned int>(area.y1 - area.y0);
    auto image = std::make_shared<CQorImage>(width, height, PixelFormat::Bgra32Premultiplied, 4, true);
    if (!isolated) ImageUtil::Copy(parent, area, *image, {0, 0});
    return image;
}

void PaintEllipse(IPDFImageBlender& blender, const Color& color, const Point<int, 2>& middle,
                  const Point<int, 2>& radii, BlendMode mode) {
    const auto row = MakeSheet(2 * radii.x, 1, color);
    for (int y = -radii.y; y < radii.y; ++y) {
        const double height = (y + 0.5) / radii.y;
        const int half = static_cast<int>(std::lround(radii.x * std::sqrt(1 - height * height)));
        BlendRange(blender, row, {middle.x - half, middle.y + y, middle.x + half, middle.y + y + 1},
                   {radii.x - middle.x, -middle.y - y}, 255, mode);
    }
}

}  // namespace examples
