// groups: paints with transparency groups and writes two pictures into the current directory: groups.bmp, the figure of
// GroupFigure.h, and shadow.bmp, a photograph with a vignette and with a paper figure that casts a soft shadow.

#include <cmath>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>

#include "GroupFigure.h"
#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

using Image = std::shared_ptr<IQorImage>;
using Transfer = std::shared_ptr<IPDFTransferFunction>;
using Source = IPDFTransferFunction::SourceType;

constexpr int kWidth = 600;
constexpr int kHeight = 400;
constexpr Range<int, 2> kPhotograph{0, 0, kWidth, kHeight};
constexpr Point<int, 2> kHorseSize{260, 213};
constexpr Point<int, 2> kHorsePlace{310, 150};
constexpr Point<int, 2> kShadowOffset{14, 18};
constexpr int kBlur = 10;

void Save(const IQorImage& image, const std::string& path) {
    if (!CDIBSaver().Save(image, path)) throw std::runtime_error("cannot write " + path);
}

Image MakeSheet(const Color& color) {
    auto sheet = std::make_shared<CQorImage>(kWidth, kHeight, PixelFormat::Bgr24, 4, true);
    ImageUtil::Clear(*sheet, color, kPhotograph);
    return sheet;
}

// Through a mask: the range is a place in the source and in the mask, and `place` leads from there to the image.
void PaintThrough(IPDFImageBlender& blender, const Image& source, const Image& mask, const Transfer& transfer,
                  const Point<int, 2>& place, unsigned char alpha) {
    const auto coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange({0, 0, static_cast<int>(mask->GetWidth()), static_cast<int>(mask->GetHeight())});
    auto painted = IPDFImageBlender::CreateCoverage();
    if (!blender.Blend(source, coverage, place, mask, transfer, {0, 0}, alpha, BlendMode::Normal, painted))
        throw std::runtime_error("the blender refused a mask");
}

// A group over opaque black, from which a mask takes its luminosity: ellipses, the smaller the lighter.
Image MakeVignette(IPDFImageBlender& blender) {
    Image image = MakeGroupImage(*MakeSheet(ARGB_BLACK), kPhotograph, false);
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
    const Image sheet = MakeSheet(ARGB_BLACK);
    Image image = MakeGroupImage(*sheet, kPhotograph, true);
    blender.BeginGroup(image, nullptr, false, true, false);
    for (int dy = -kBlur; dy <= kBlur; dy += 2) {
        for (int dx = -kBlur; dx <= kBlur; dx += 2) {
            if (dx * dx + dy * dy > kBlur * kBlur) continue;
            const Point<int, 2> place{kHorsePlace.x + kShadowOffset.x + dx, kHorsePlace.y + kShadowOffset.y + dy};
            PaintThrough(blender, sheet, shape, transfer, place, 6);
        }
    }
    blender.EndGroup();
    return image;
}

void PaintFigure() {
    // Three times as large and then reduced, so that the discs get smooth edges.
    constexpr unsigned int kOversampling = 3;
    const FigureSize size(10 * kOversampling);
    const std::shared_ptr<CQorImage> figure = MakeGradients(size);
    PaintGroups(figure, size);
    const unsigned int side = figure->GetWidth() / kOversampling;
    Save(*Fit(*figure, side, side, Framing::Fill), "groups.bmp");
}

void PaintPhotograph() {
    const Image photograph = Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/coffee.png"), kWidth, kHeight, Framing::Fill);
    const Image horse =
        Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/horse.png"), kHorseSize.x, kHorseSize.y, Framing::Whole);
    const Transfer whereDark = std::make_shared<CPostscriptPDFTransferFunction>(Source::Luminosity, "{ 1 exch sub }");
    const auto blender = MakeBlender(photograph);

    const Transfer darken = std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.65, 0.0, 1.0);
    PaintThrough(*blender, MakeSheet(ARGB_BLACK), MakeVignette(*blender), darken, {0, 0}, 255);

    const Transfer soften = std::make_shared<CExponentialPDFTransferFunction>(Source::Alpha, 0.0, 0.85, 1.5);
    PaintThrough(*blender, MakeSheet(ARGB_BLACK), MakeShadow(*blender, horse, whereDark), soften, {0, 0}, 255);
    PaintThrough(*blender, MakeSheet(0xFFF4EEE0), horse, whereDark, kHorsePlace, 255);
    Save(*photograph, "shadow.bmp");
}

}  // namespace

int main() {
    try {
        PaintFigure();
        PaintPhotograph();
    } catch (const std::exception& error) {
        std::cerr << "groups: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    std::cout << "groups.bmp: isolated groups above, non-isolated below; knockout groups on the right\n"
                 "shadow.bmp: a vignette and a soft shadow, painted through masks that groups made\n";
    return EXIT_SUCCESS;
}
