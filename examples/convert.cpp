// convert [INPUT [OUTPUT.bmp]]: writes a JPEG, PNG or BMP file as a bitmap and reads it back.

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

// Whether a bitmap holds the pixels of a picture, byte by byte.
bool Holds(const std::string& path, const IQorImage& picture) {
    const auto read = CDIBLoader().Load(path, nullptr);
    if (!read || read->GetWidth() != picture.GetWidth() || read->GetHeight() != picture.GetHeight()) return false;
    const unsigned int bytes = RowStride(picture.GetWidth(), picture.GetPixelFormat(), 0);
    for (unsigned int y = 0; y < picture.GetHeight(); ++y) {
        if (!std::equal(RowOf(picture, y), RowOf(picture, y) + bytes, RowOf(*read, y))) return false;
    }
    return true;
}

void Convert(const std::string& input, const std::string& output) {
    const auto picture = ReadPicture(input);
    if (!CDIBSaver().Save(*picture, output) || !Holds(output, *picture))
        throw std::runtime_error("cannot write " + output);
    std::cout << output << ": " << picture->GetWidth() << 'x' << picture->GetHeight() << ", "
              << BitsPerPixel(picture->GetPixelFormat()) << " bits\n";
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Convert(argc > 1 ? argv[1] : IMAGEOP_EXAMPLE_DATA "/rocket.jpg", argc > 2 ? argv[2] : "converted.bmp");
    } catch (const std::exception& error) {
        std::cerr << "convert: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
