// Paints a colour through a stencil: a 1-bit mask whose bits 0 paint and whose bits 1 protect.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

constexpr std::string_view kShape[] = {
    "...##...",  //
    "..####..",  //
    ".######.",  //
    "########",  //
    "...##...",  //
    "...##...",  //
    "...##...",  //
    "...##...",
};
constexpr unsigned int kSide = std::size(kShape);

// Rows of bits, the highest of a byte leftmost.
std::shared_ptr<IQorImage> MakeArrow() {
    auto stencil = std::make_shared<CQorImage>(kSide, kSide, PixelFormat::Index1, 1, false);
    for (unsigned int y = 0; y < kSide; ++y) {
        unsigned int bits = 0;
        for (const char c : kShape[y]) bits = bits << 1 | (c == '#' ? 0 : 1);
        *RowOf(*stencil, y) = static_cast<unsigned char>(bits);
    }
    return stencil;
}

void PaintArrow() {
    const std::shared_ptr<IQorImage> paper = MakeSheet(kSide, kSide, 0xFFFFFFFF);
    Painter(paper).Fill({0, 0, kSide, kSide}, 0xFF203060, {.mask = MakeArrow()});
    for (unsigned int y = 0; y < kSide; ++y) {
        for (unsigned int x = 0; x < kSide; ++x) {
            const bool painted = RowOf(*paper, y)[3 * x] == 0x60;
            std::cout << (painted ? '#' : '.');
            if (painted != (kShape[y][x] == '#')) throw std::runtime_error("a bit was not obeyed");
        }
        std::cout << '\n';
    }
}

}  // namespace

int main() {
    try {
        PaintArrow();
    } catch (const std::exception& error) {
        std::cerr << "stencil: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
