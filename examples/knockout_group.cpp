// Two translucent squares that overlap, painted as a group: in a knockout group the second replaces the first, in any
// other it is mixed with it.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

// The colour of the overlap, on white paper.
unsigned int PaintSquares(bool knockout) {
    const std::shared_ptr<IQorImage> paper = MakeSheet(60, 60, 0xFFFFFFFF);
    Painter page(paper);
    page.BeginGroup({0, 0, 60, 60}, {.isolated = true, .knockout = knockout});
    page.Fill({0, 0, 40, 40}, 0xFFFF0000, {.alpha = 128});
    page.Fill({20, 20, 60, 60}, 0xFF0000FF, {.alpha = 128});
    page.EndGroup();

    const unsigned char* const middle = RowOf(*paper, 30) + 3 * 30;
    return static_cast<unsigned int>(middle[2] << 16 | middle[1] << 8 | middle[0]);
}

}  // namespace

int main() {
    try {
        const unsigned int mixed = PaintSquares(false);
        const unsigned int replaced = PaintSquares(true);
        std::cout << std::hex << "half red, then half blue: #" << mixed << "; in a knockout group: #" << replaced
                  << '\n';
        // In a knockout group nothing of the red is left: half blue on white.
        return replaced == 0x7F7FFF && mixed != replaced ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << "knockout_group: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
