// page [BACKGROUND [PICTURE [STENCIL]]]: paints PICTURE on BACKGROUND in every way the blender knows, one cell each,
// and writes page.png in the current directory. The files may be BMP, PNG or JPEG.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "Page.h"
#include "Pictures.h"

int main(int argc, char** argv) {
    try {
        examples::Save(*examples::PaintPage(argc > 1 ? argv[1] : IMAGEOP_EXAMPLE_DATA "/coffee.png",
                                            argc > 2 ? argv[2] : IMAGEOP_EXAMPLE_DATA "/chelsea.png",
                                            argc > 3 ? argv[3] : IMAGEOP_EXAMPLE_DATA "/horse.png"),
                       "page.png");
    } catch (const std::exception& error) {
        std::cerr << "page: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    std::cout << "page.png: Normal, Multiply, Screen, Overlay / Darken, Lighten, ColorDodge, ColorBurn / HardLight, "
                 "SoftLight, Difference, Exclusion / soft mask, inverted mask, stencil, the stencil's own picture\n";
    return EXIT_SUCCESS;
}
