#include "Gallery.h"

#include <stdexcept>

namespace examples {

using namespace vantu;

Image Photograph(const std::string& file, int width, int height) {
    return Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/" + file), static_cast<unsigned int>(width),
               static_cast<unsigned int>(height), Framing::Fill);
}

Image Convert(const IQorImage& picture, PixelFormat format) {
    auto converted = std::make_shared<CQorImage>(picture.GetWidth(), picture.GetHeight(), format, 4, true);
    const Range<int, 2> whole{0, 0, static_cast<int>(picture.GetWidth()), static_cast<int>(picture.GetHeight())};
    if (!ImageUtil::Copy(picture, whole, *converted, {0, 0})) throw std::runtime_error("a picture was not copied");
    return converted;
}

Sheet::Sheet(int columns, int rows, const Point<int, 2>& cell, const Color& color)
    : columns_(columns),
      cell_(cell),
      image_(MakeSheet(columns * (cell.x + kGap) + kGap, rows * (cell.y + kGap) + kGap, color)),
      blender_(MakeBlender(image_)) {}

Point<int, 2> Sheet::NextCell() {
    const int column = used_ % columns_;
    const int row = used_ / columns_;
    ++used_;
    return {kGap + column * (cell_.x + kGap), kGap + row * (cell_.y + kGap)};
}

void Sheet::Mount(const Image& picture) {
    if (!picture) throw std::runtime_error("an image could not be made");
    const Point<int, 2> corner = NextCell();
    PaintAt(*blender_, picture,
            {corner.x + (cell_.x - static_cast<int>(picture->GetWidth())) / 2,
             corner.y + (cell_.y - static_cast<int>(picture->GetHeight())) / 2},
            255, BlendMode::Normal);
}

}  // namespace examples
