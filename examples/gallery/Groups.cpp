// The figure of transparency groups, and a photograph with a vignette and with a paper figure that casts a soft shadow:
// both come from masks that groups made.

#include <cmath>

#include "../GroupFigure.h"
#include "Gallery.h"

namespace examples {

using namespace vantu;

namespace {

using Source = IPDFTransferFunction::SourceType;

constexpr int kWidth = 600;
constexpr int kHeight = 400;
constexpr Range<int, 2> kPhotograph{0, 0, kWidth, kHeight};
constexpr Point<int, 2> kHorseSize{260, 213};
constexpr Point<int, 2> kHorsePlace{310, 150};
constexpr Point<int, 2> kShadowOffset{14, 18};
constexpr int kBlur = 10;

// A group over opaque black, from which a mask takes its luminosity: ellipses, the smaller the lighter.
Image MakeVignette(IPDFImageBlender& blender) {
    Image image = MakeGroupImage(*MakeSheet(kWidth, kHeight, ARGB_BLACK), kPhotograph, false);
    blender.BeginGroup(image, nullptr, false, true, false);
    constexpr int kSteps = 100;
    for (int step = 0; step < kSteps; ++step) {
        const double done = (step + 1.0) / kSteps;
        const auto grey = static_cast<unsigned int>(std::lround(255 * done * done * (3 - 2 * done)));
        const int shrink = step + 1;
        PaintEllipse(blender, ARGB_BLACK | grey * 0x010101, {kWidth / 2, kHeight / 2},
                     {kWidth / 2 - shrink * 3 / 2, kHeight / 2 - shrink}, BlendMode::Normal);
    }
    blender.EndGroup();
    return image;
}

// An isolated group, from which a mask takes its alpha: the shape, painted faintly at every place of a small disc.
Image MakeShadow(IPDFImageBlender& blender, const Image& shape, const Transfer& transfer) {
    const Image sheet = MakeSheet(kWidth, kHeight, ARGB_BLACK);
    Image image = MakeGroupImage(*sheet, kPhotograph, true);
    blender.BeginGroup(image, nullptr, false, true, false);
    for (int dy = -kBlur; dy <= kBlur; dy += 2) {
        for (int dx = -kBlur; dx <= kBlur; dx += 2) {
            if (dx * dx + dy * dy > kBlur * kBlur) continue;
            const Point<int, 2> place{kHorsePlace.x + kShadowOffset.x + dx, kHorsePlace.y + kShadowOffset.y + dy};
            PaintThrough(blender, sheet, shape, transfer, place, 6, BlendMode::Normal);
        }
    }
    blender.EndGroup();
    return image;
}

// One cell of the figure, drawn three times as large and then reduced, so that the discs get smooth edges.
template <std::size_t Kind>
Image DrawGroup() {
    constexpr int kOversampling = 3;
    const FigureSize size(10 * kOversampling);
    const std::shared_ptr<CQorImage> figure = MakeGradients(size);
    PaintGroups(figure, size);
    const Image cell = MakeSheet(size.cell, size.cell, ARGB_BLACK);
    ImageUtil::Copy(*figure, size.CellOf(Kind), *cell, {0, 0});
    const auto side = static_cast<unsigned int>(size.cell / kOversampling);
    return Fit(*cell, side, side, Framing::Fill);
}

Image DrawShadow() {
    const Image photograph = Photograph("coffee.png", kWidth, kHeight);
    const Image horse =
        Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/horse.png"), kHorseSize.x, kHorseSize.y, Framing::Whole);
    const Image ink = MakeSheet(kWidth, kHeight, ARGB_BLACK);
    const Image paper = MakeSheet(kWidth, kHeight, 0xFFF4EEE0);
    const Transfer whereDark = std::make_shared<CPostscriptPDFTransferFunction>(Source::Luminosity, "{ 1 exch sub }");
    const auto blender = MakeBlender(photograph);

    const Transfer darken = std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.65, 0.0, 1.0);
    PaintThrough(*blender, ink, MakeVignette(*blender), darken, {0, 0}, 255, BlendMode::Normal);

    const Transfer soften = std::make_shared<CExponentialPDFTransferFunction>(Source::Alpha, 0.0, 0.85, 1.5);
    PaintThrough(*blender, ink, MakeShadow(*blender, horse, whereDark), soften, {0, 0}, 255, BlendMode::Normal);
    PaintThrough(*blender, paper, horse, whereDark, kHorsePlace, 255, BlendMode::Normal);
    return Fit(*photograph, kWidth * 3 / 5, kHeight * 3 / 5, Framing::Fill);
}

}  // namespace

std::vector<Drawing> GroupDrawings() {
    return {{"isolated", DrawGroup<0>},
            {"isolated-knockout", DrawGroup<1>},
            {"non-isolated", DrawGroup<2>},
            {"non-isolated-knockout", DrawGroup<3>},
            {"shadow", DrawShadow}};
}

}  // namespace examples
