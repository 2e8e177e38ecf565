#include "Gallery.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace examples {

using namespace vantu;

Image Photograph(const std::string& file, int width, int height) {
    return Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/" + file), static_cast<unsigned int>(width),
               static_cast<unsigned int>(height), Framing::Fill);
}

// channel = 1/3 + 2/3 * clamp(|(h + o) mod 6 - 3| - 1).
Color Rainbow(double position) {
    const auto channel = [hue = 5 * position](double origin) {
        const double pure = std::clamp(std::abs(std::fmod(hue + origin, 6.0) - 3) - 1, 0.0, 1.0);
        return static_cast<unsigned int>(std::lround(255 * (1 + 2 * pure) / 3));
    };
    return Color(ARGB_BLACK | channel(0) << 16 | channel(4) << 8 | channel(2));
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
      painter_(image_) {}

Point<int, 2> Sheet::NextCell() {
    const int column = used_ % columns_;
    const int row = used_ / columns_;
    ++used_;
    return {kGap + column * (cell_.x + kGap), kGap + row * (cell_.y + kGap)};
}

void Sheet::Mount(const Image& picture) {
    if (!picture) throw std::runtime_error("an image could not be made");
    const Point<int, 2> corner = NextCell();
    painter_.Draw(picture, {corner.x + (cell_.x - static_cast<int>(picture->GetWidth())) / 2,
                            corner.y + (cell_.y - static_cast<int>(picture->GetHeight())) / 2});
}

}  // namespace examples
