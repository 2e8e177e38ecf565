// A page made of two photographs blended, one that fades in through a soft mask, and a knockout group.

#include <vantu/imageop.h>

#include <iostream>
#include <memory>

using namespace vantu;

namespace {

constexpr int kWidth = 600;
constexpr int kHeight = 400;

// A PNG that was loaded stands on its head.
std::shared_ptr<IQorImage> Read(const char* name) {
    const auto loaded = CPNGLoader().Load(std::string(IMAGEOP_EXAMPLE_DATA "/") + name, nullptr);
    return loaded ? ImageUtil::Flip(*loaded, false, true, nullptr, nullptr) : nullptr;
}

// Bare 8-bit samples that grow from black at the left to white at the right.
std::shared_ptr<IQorImage> MakeFade(unsigned int width, unsigned int height) {
    auto mask = std::make_shared<CQorImage>(width, height, PixelFormat::Index8, 4, true);
    for (unsigned int x = 0; x < width; ++x) {
        const int column = static_cast<int>(x);
        ImageUtil::ClearIndex(*mask, 255 * x / (width - 1), {column, 0, column + 1, static_cast<int>(height)});
    }
    return mask;
}

}  // namespace

int main() {
    const auto paper = std::make_shared<CQorImage>(kWidth, kHeight, PixelFormat::Bgr24, 4, true);
    const std::shared_ptr<IQorImage> coffee = Read("coffee.png");
    const std::shared_ptr<IQorImage> cat = Read("chelsea.png");

    Painter page(paper);
    page.Fill({0, 0, kWidth, kHeight}, 0xFFFFFFFF);
    page.Draw(coffee, {0, 0});
    page.SetClip({{20, 20, 290, 190}});
    page.Draw(cat, {-60, 0}, {.mode = BlendMode::Screen, .alpha = 200});

    page.SetClip({{310, 20, 580, 190}});
    const auto grey = std::make_shared<CIdentityPDFTransferFunction>(IPDFTransferFunction::SourceType::Luminosity);
    page.Draw(cat, {240, 0}, {.mask = MakeFade(270, 170), .maskAt = {310, 20}, .maskTransfer = grey});

    page.ClearClip();
    page.BeginGroup({20, 210, 580, 380}, {.isolated = true, .knockout = true});
    page.Fill({40, 220, 340, 330}, 0xFFFF0000, {.alpha = 128});
    page.Fill({260, 260, 560, 370}, 0xFF0000FF, {.alpha = 128});  // where they overlap there is no red
    const PaintResult result = page.EndGroup({.mode = BlendMode::Multiply});

    std::cout << "the group: " << TextOf(result) << '\n';
    return result == PaintResult::Painted && CPNGSaver().Save(*paper, "first_page.png") ? 0 : 1;
}
