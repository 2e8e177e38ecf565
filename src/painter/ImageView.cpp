#include "painter/ImageView.h"

namespace vantu {

void ImageView::Show(const IQorImage& image, unsigned int x, unsigned int y, unsigned int height,
                     const ColorMap* palette) {
    format_ = image.GetPixelFormat();
    alignment_ = image.GetAlignment();
    bottomUp_ = image.IsBottomUp();
    palette_ = palette;
    height_ = height;
    const unsigned int bits = BitsPerPixel(format_);
    const unsigned int stride = RowStride(image.GetWidth(), format_, alignment_);
    width_ = stride * 8 / bits;
    const std::size_t rowsBefore = bottomUp_ ? std::size_t{image.GetHeight()} - y - height : y;
    pixels_ = image.GetPixelData() + rowsBefore * stride + std::size_t{x} * bits / 8;
}

void ImageView::ShowPixels(const unsigned char* pixels, unsigned int width, unsigned int height) {
    format_ = PixelFormat::Bgra32Premultiplied;
    alignment_ = 4;
    bottomUp_ = false;
    palette_ = nullptr;
    width_ = width;
    height_ = height;
    pixels_ = pixels;
}

}  // namespace vantu
