// What each blend mode does to a photograph, and its function as a map: the backdrop grows to the right, the source
// upward, and the grey of a point is the result.

#include <initializer_list>

#include "../Page.h"
#include "Gallery.h"

namespace examples {

using namespace vantu;

namespace {

constexpr int kMap = 128;
constexpr int kPhotoWidth = 204;
constexpr int kGap = 8;
constexpr int kStrip = 48;

// A ramp from `from` to `to`, one column or row per step.
enum class Direction { Right, Up };

Image Ramp(int width, int height, Direction direction) {
    const Image ramp = MakeSheet(width, height, ARGB_BLACK);
    const int steps = direction == Direction::Right ? width : height;
    for (int i = 0; i < steps; ++i) {
        const auto grey = static_cast<unsigned int>(255 * i / (steps - 1));
        const Range<int, 2> line = direction == Direction::Right ? Range<int, 2>{i, 0, i + 1, height}
                                                                 : Range<int, 2>{0, height - 1 - i, width, height - i};
        ImageUtil::Clear(*ramp, ARGB_BLACK | grey * 0x010101, line);
    }
    return ramp;
}

Image Spectrum(int width, int height) {
    const Image spectrum = MakeSheet(width, height, ARGB_BLACK);
    for (int x = 0; x < width; ++x) ImageUtil::Clear(*spectrum, Rainbow((x + 0.5) / width), {x, 0, x + 1, height});
    return spectrum;
}

template <BlendMode Mode>
Image DrawMode() {
    const Image sheet = MakeSheet(kPhotoWidth + kGap + kMap, kMap, 0xFFFFFFFF);
    Painter page(sheet);
    // The photograph: bare at the top, then under a strip from black to white, then under one of all hues.
    page.Draw(Photograph("coffee.png", kPhotoWidth, kMap), {0, 0});
    page.Draw(Ramp(kPhotoWidth, kStrip, Direction::Right), {0, kMap - 2 * kStrip}, {.mode = Mode});
    page.Draw(Spectrum(kPhotoWidth, kStrip), {0, kMap - kStrip}, {.mode = Mode});
    // The map.
    page.Draw(Ramp(kMap, kMap, Direction::Right), {kPhotoWidth + kGap, 0});
    page.Draw(Ramp(kMap, kMap, Direction::Up), {kPhotoWidth + kGap, 0}, {.mode = Mode});
    return sheet;
}

// Black burnt into white, and white dodged out of black.
Image DrawDodgeAndBurn() {
    constexpr Point<int, 2> kCell{132, 84};
    const Image stencil =
        MakeStencil(Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/horse.png"), kCell.x, kCell.y, Framing::Whole));
    Sheet sheet(2, 1, kCell, 0xFF808080);
    const auto paint = [&](const Color& paper, const Color& ink, BlendMode mode) {
        const auto [x, y] = sheet.NextCell();
        const Range<int, 2> cell{x, y, x + kCell.x, y + kCell.y};
        sheet.GetPainter().Fill(cell, paper);
        sheet.GetPainter().Fill(cell, ink, {.mode = mode, .mask = stencil, .maskAt = {x, y}});
    };
    constexpr Color kWhite(0xFFFFFFFF);
    paint(kWhite, ARGB_BLACK, BlendMode::ColorBurn);
    paint(ARGB_BLACK, kWhite, BlendMode::ColorDodge);
    return sheet.GetImage();
}

Image DrawAlphas() {
    constexpr Point<int, 2> kCell{108, 72};
    Sheet sheet(6, 1, kCell, 0xFFFFFFFF);
    const Image backdrop = Photograph("coffee.png", kCell.x, kCell.y);
    const Image source = Photograph("chelsea.png", kCell.x, kCell.y);
    using Bytes = std::initializer_list<unsigned char>;
    for (const unsigned char alpha : Bytes{0, 51, 102, 153, 204, 255}) {
        const Point<int, 2> corner = sheet.NextCell();
        sheet.GetPainter().Draw(backdrop, corner);
        sheet.GetPainter().Draw(source, corner, {.alpha = alpha});
    }
    return sheet.GetImage();
}

Image DrawPage() {
    const Image page = PaintPage(IMAGEOP_EXAMPLE_DATA "/coffee.png", IMAGEOP_EXAMPLE_DATA "/chelsea.png",
                                 IMAGEOP_EXAMPLE_DATA "/horse.png");
    return Fit(*page, 600, 400, Framing::Fill);
}

}  // namespace

std::vector<Drawing> ModeDrawings() {
    return {
        {"mode-normal", DrawMode<BlendMode::Normal>},
        {"mode-multiply", DrawMode<BlendMode::Multiply>},
        {"mode-screen", DrawMode<BlendMode::Screen>},
        {"mode-overlay", DrawMode<BlendMode::Overlay>},
        {"mode-darken", DrawMode<BlendMode::Darken>},
        {"mode-lighten", DrawMode<BlendMode::Lighten>},
        {"mode-colordodge", DrawMode<BlendMode::ColorDodge>},
        {"mode-colorburn", DrawMode<BlendMode::ColorBurn>},
        {"mode-hardlight", DrawMode<BlendMode::HardLight>},
        {"mode-softlight", DrawMode<BlendMode::SoftLight>},
        {"mode-difference", DrawMode<BlendMode::Difference>},
        {"mode-exclusion", DrawMode<BlendMode::Exclusion>},
        {"dodge-burn", DrawDodgeAndBurn},
        {"alphas", DrawAlphas},
        {"page", DrawPage},
    };
}

}  // namespace examples
