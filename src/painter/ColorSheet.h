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

    /// The sheet, of which at least the first `columns` pixels of the upper `rows` rows have a colour. Its alpha is not
    /// looked at.
    /// @param columns 1 to `kWidth`. @param rows 1 to `kHeight`.
    const std::shared_ptr<IQorImage>& Get(Color color, int columns, int rows);

private:
    std::shared_ptr<IQorImage> image_;
    Color color_;
    int columns_ = 0;  ///< how many have the colour
    int rows_ = 0;
};

}  // namespace vantu
