#pragma once

#include <vantu/CQorImage.h>
#include <vantu/Color.h>

#include <memory>

namespace vantu {

/// A small opaque image of one colour, which large areas are tiled with.
class ColorSheet {
public:
    static constexpr int kWidth = 256;
    static constexpr int kHeight = 32;

    /// The sheet, with at least the upper `rows` rows in a colour. Its alpha is not looked at.
    /// @param rows 1 to `kHeight`.
    const std::shared_ptr<IQorImage>& Get(Color color, int rows);

private:
    std::shared_ptr<IQorImage> image_;
    Color color_;
    int rows_ = 0;  ///< how many have the colour
};

}  // namespace vantu
