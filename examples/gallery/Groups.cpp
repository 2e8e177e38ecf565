// The figure of transparency groups, and a photograph with a vignette and with a paper figure that casts a soft shadow:
// both come from masks that groups made.

#include <cmath>

#include "Gallery.h"

namespace examples {

using namespace vantu;

namespace {

using Source = IPDFTransferFunction::SourceType;

constexpr int kWidth = 600;
constexpr int kHeight = 400;
constexpr Point<int, 2> kHorseSize{260, 213};
constexpr Point<int, 2> kHorsePlace{310, 150};
constexpr Point<int, 2> kShadowOffset{14, 18};
constexpr int kBlur = 10;

constexpr Range<int, 2> kWhole{0, 0, kWidth, kHeight};

// An ellipse by one range per row: what lies in no range is not knocked out by an element of a knockout group.
std::vector<Range<int, 2>> Ellipse(const Point<int, 2>& middle, const Point<int, 2>& radii) {
    std::vector<Range<int, 2>> rows;
    for (int y = -radii.y; y < radii.y; ++y) {
        const double height = (y + 0.5) / radii.y;
        const int half = static_cast<int>(std::lround(radii.x * std::sqrt(1 - height * height)));
        rows.push_back({middle.x - half, middle.y + y, middle.x + half, middle.y + y + 1});
    }
    return rows;
}

// One cell of the classic figure: over a colour gradient, a group of four overlapping grey discs, each painted with
// Multiply. It is drawn three times as large and then reduced, so that the discs get smooth edges.
template <bool Isolated, bool Knockout>
Image DrawGroup() {
    constexpr int kOversampling = 3, kUnit = 10 * kOversampling;
    constexpr int kSide = 17 * kUnit, kRadius = 4 * kUnit;
    const Image cell = MakeSheet(kSide, kSide, ARGB_BLACK);
    for (int x = 0; x < kSide; ++x) ImageUtil::Clear(*cell, Rainbow((x + 0.5) / kSide), {x, 0, x + 1, kSide});

    Painter page(cell);
    page.BeginGroup({0, 0, kSide, kSide}, {.isolated = Isolated, .knockout = Knockout});
    constexpr int kNear = kSide / 2 - 5 * kRadius / 8, kFar = kSide - kNear;
    for (const Point<int, 2>& middle : {Point<int, 2>{kNear, kNear}, {kFar, kNear}, {kNear, kFar}, {kFar, kFar}})
        page.Fill(Ellipse(middle, {kRadius, kRadius}), 0xFFBFBFBF, {.mode = BlendMode::Multiply});
    page.EndGroup();
    return Fit(*cell, kSide / kOversampling, kSide / kOversampling, Framing::Fill);
}

// Ellipses on black, the smaller the lighter: a mask takes its luminosity from them.
Image MakeVignette() {
    const Image image = MakeSheet(kWidth, kHeight, ARGB_BLACK);
    Painter page(image);
    constexpr int kSteps = 100;
    for (int step = 0; step < kSteps; ++step) {
        const double done = (step + 1.0) / kSteps;
        const auto grey = static_cast<unsigned int>(std::lround(255 * done * done * (3 - 2 * done)));
        const int shrink = step + 1;
        page.Fill(Ellipse({kWidth / 2, kHeight / 2}, {kWidth / 2 - shrink * 3 / 2, kHeight / 2 - shrink}),
                  ARGB_BLACK | grey * 0x010101);
    }
    return image;
}

// An isolated group, from which a mask takes its alpha: the shape, painted faintly at every place of a small disc.
Image MakeShadow(const Image& shape, const Transfer& transfer) {
    const Image image = std::make_shared<CQorImage>(kWidth, kHeight, PixelFormat::Bgra32Premultiplied, 4, true);
    Painter page(image);
    page.BeginGroup(kWhole, {.isolated = true});
    for (int dy = -kBlur; dy <= kBlur; dy += 2) {
        for (int dx = -kBlur; dx <= kBlur; dx += 2) {
            if (dx * dx + dy * dy > kBlur * kBlur) continue;
            const Point<int, 2> place{kHorsePlace.x + kShadowOffset.x + dx, kHorsePlace.y + kShadowOffset.y + dy};
            page.Fill(kWhole, ARGB_BLACK, {.alpha = 6, .mask = shape, .maskAt = place, .maskTransfer = transfer});
        }
    }
    page.EndGroup();
    return image;
}

Image DrawShadow() {
    const Image photograph = Photograph("coffee.png", kWidth, kHeight);
    const Image horse =
        Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/horse.png"), kHorseSize.x, kHorseSize.y, Framing::Whole);
    const Transfer darken = std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.65, 0.0, 1.0);
    const Transfer soften = std::make_shared<CExponentialPDFTransferFunction>(Source::Alpha, 0.0, 0.85, 1.5);
    const Transfer whereDark = std::make_shared<CPostscriptPDFTransferFunction>(Source::Luminosity, "{ 1 exch sub }");
    Painter page(photograph);
    page.Fill(kWhole, ARGB_BLACK, {.mask = MakeVignette(), .maskTransfer = darken});
    page.Fill(kWhole, ARGB_BLACK, {.mask = MakeShadow(horse, whereDark), .maskTransfer = soften});
    page.Fill(kWhole, 0xFFF4EEE0, {.mask = horse, .maskAt = kHorsePlace, .maskTransfer = whereDark});
    return Fit(*photograph, kWidth * 3 / 5, kHeight * 3 / 5, Framing::Fill);
}

}  // namespace

std::vector<Drawing> GroupDrawings() {
    return {{"isolated", DrawGroup<true, false>},
            {"isolated-knockout", DrawGroup<true, true>},
            {"non-isolated", DrawGroup<false, false>},
            {"non-isolated-knockout", DrawGroup<false, true>},
            {"shadow", DrawShadow}};
}

}  // namespace examples
