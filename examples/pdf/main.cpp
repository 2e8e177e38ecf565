// pdf FILE.pdf: says how many pages a file has and how large each is in pixels of 1/72 inch.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "Document.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: pdf FILE.pdf\n";
        return EXIT_FAILURE;
    }
    try {
        const pdf::Document document(argv[1]);
        for (int number = 0; number < document.PageCount(); ++number) {
            const pdf::Pixels area = document.Geometry(number, 72).area;
            std::cout << "page " << number + 1 << ": " << area.x1 << " x " << area.y1 << " pixels\n";
        }
    } catch (const std::exception& error) {
        std::cerr << "pdf: cannot read " << argv[1] << ": " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
