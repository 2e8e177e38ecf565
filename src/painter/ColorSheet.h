#pragma once

#include <vantu/Color.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "painter/ImageView.h"

namespace vantu {

/// A small opaque image of one colour, of any shape, which large areas are tiled with.
class ColorSheet {
public:
    static constexpr int kPixels = 16384;

    /// The sheet in a colour, the alpha of which is not looked at. It stays as it is until the next call.
    ///
    /// REQUIRES: `columns` and `rows` are at least 1, and together at most `kPixels`.
    const std::shared_ptr<IQorImage>& Get(const Color& color, int columns, int rows);

private:
    std::vector<std::uint32_t> pixels_;  ///< as they lie in an image; whatever its shape, all of them are the same
    std::uint32_t pixel_ = 0;
    std::size_t filled_ = 0;  ///< how many have the colour
    const std::shared_ptr<ImageView> view_ = std::make_shared<ImageView>();
    const std::shared_ptr<IQorImage> image_ = view_;  ///< the same as a blender takes it
};

}  // namespace vantu
