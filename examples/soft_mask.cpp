// Paints a photograph through a soft mask: a grey picture says how opaque each pixel is, by a transfer function.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

// A mask whose samples grow from black at the left edge to white at the right: bare 8-bit samples, read by luminosity
// through the grey ramp that such an image is born with.
std::shared_ptr<IQorImage> MakeFade(unsigned int width, unsigned int height) {
    auto mask = std::make_shared<CQorImage>(width, height, PixelFormat::Index8, 4, true);
    for (unsigned int x = 0; x < width; ++x) {
        const int column = static_cast<int>(x);
        ImageUtil::ClearIndex(*mask, 255 * x / (width - 1), {column, 0, column + 1, static_cast<int>(height)});
    }
    return mask;
}

void PaintFade() {
    const std::shared_ptr<IQorImage> page = ReadPicture(IMAGEOP_EXAMPLE_DATA "/coffee.png");
    const auto cat =
        Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/chelsea.png"), page->GetWidth(), page->GetHeight(), Framing::Fill);
    const auto mask = MakeFade(page->GetWidth(), page->GetHeight());
    // opacity = x ^ 2: slow at first.
    using Source = IPDFTransferFunction::SourceType;
    const auto slow = std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.0, 1.0, 2.0);

    const unsigned char leftBefore = RowOf(*page, 200)[0];
    Painter(page).Draw(cat, {0, 0}, {.mask = mask, .maskTransfer = slow});
    const std::size_t last = std::size_t{3} * (page->GetWidth() - 1);
    std::cout << "opacity at the left " << slow->ComputeAlpha(0xFF000000) << ", in the middle "
              << slow->ComputeAlpha(0xFF808080) << ", at the right " << slow->ComputeAlpha(0xFFFFFFFF) << '\n';
    if (RowOf(*page, 200)[0] != leftBefore || RowOf(*page, 200)[last] != RowOf(*cat, 200)[last])
        throw std::runtime_error("black does not protect, or white does not paint");
    Save(*page, "soft_mask.png");
}

}  // namespace

int main() {
    try {
        PaintFade();
    } catch (const std::exception& error) {
        std::cerr << "soft_mask: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
