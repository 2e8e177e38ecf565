#include "painter/ColorSheet.h"

#include <algorithm>
#include <array>
#include <bit>

namespace vantu {

const std::shared_ptr<IQorImage>& ColorSheet::Get(const Color& color, int columns, int rows) {
    const auto pixel = std::bit_cast<std::uint32_t>(
        std::array{color.GetBlue(), color.GetGreen(), color.GetRed(), static_cast<unsigned char>(255)});
    const auto width = static_cast<unsigned int>(columns), height = static_cast<unsigned int>(rows);
    const std::size_t count = std::size_t{width} * height;
    pixels_.resize(kPixels);
    if (pixel != pixel_) filled_ = 0;
    pixel_ = pixel;
    if (filled_ < count) {
        std::fill_n(pixels_.data() + filled_, count - filled_, pixel);
        filled_ = count;
    }
    view_->ShowPixels(reinterpret_cast<const unsigned char*>(pixels_.data()), width, height);
    return image_;
}

}  // namespace vantu
