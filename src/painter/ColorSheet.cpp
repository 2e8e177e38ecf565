#include "painter/ColorSheet.h"

#include <vantu/ImageUtil.h>

namespace vantu {

const std::shared_ptr<IQorImage>& ColorSheet::Get(Color color, int columns, int rows) {
    const auto same = [](const Color& a, const Color& b) {
        return a.GetRed() == b.GetRed() && a.GetGreen() == b.GetGreen() && a.GetBlue() == b.GetBlue();
    };
    if (!image_) {
        image_ = std::make_shared<CQorImage>(kWidth, kHeight, PixelFormat::Bgra32Premultiplied, 4, false);
    }
    color.SetAlpha(255);
    if (!same(color, color_)) columns_ = rows_ = 0;
    color_ = color;
    if (columns_ < columns || rows_ < rows) {
        columns_ = std::max(columns_, columns);
        rows_ = std::max(rows_, rows);
        ImageUtil::Clear(*image_, color, {0, 0, columns_, rows_});
    }
    return image_;
}

}  // namespace vantu
