// A photograph as the image utilities change it. A red tab marks its top left corner, so that it can be followed
// through flips and turns.

#include "Gallery.h"

namespace examples {

using namespace vantu;

namespace {

constexpr int kCell = 136;

// Something light and dark for what is transparent to be seen against.
Image OnMat(const Image& picture) {
    const int width = static_cast<int>(picture->GetWidth());
    const int height = static_cast<int>(picture->GetHeight());
    constexpr int square = 8;
    const Image mat = MakeSheet(width, height, 0xFFD0D0D0);
    for (int y = 0; y < height; y += square) {
        for (int x = y / square % 2 * square; x + square <= width; x += 2 * square)
            ImageUtil::Clear(*mat, 0xFF909090, {x, y, x + square, y + square});
    }
    Painter(mat).Draw(picture, {0, 0});
    return mat;
}

Image DrawUtilities() {
    const Image photo = Photograph("coffee.png", 120, 80);
    ImageUtil::Clear(*photo, 0xFFE01010, {0, 0, 18, 9});

    Sheet sheet(4, 2, {kCell, kCell}, 0xFF404448);
    sheet.Mount(ImageUtil::Clone(*photo, nullptr, nullptr));
    sheet.Mount(ImageUtil::Flip(*photo, true, false, nullptr, nullptr));
    sheet.Mount(ImageUtil::Flip(*photo, false, true, nullptr, nullptr));
    sheet.Mount(ImageUtil::Rotate(*photo, 2, nullptr, nullptr));
    sheet.Mount(ImageUtil::Rotate(*photo, 1, nullptr, nullptr));
    sheet.Mount(ImageUtil::Rotate(*photo, -1, nullptr, nullptr));

    const Image copied = ImageUtil::Clone(*photo, nullptr, nullptr);
    ImageUtil::Copy(*photo, {40, 20, 80, 60}, *copied, {78, 4});
    sheet.Mount(copied);

    const Image window = Convert(*photo, PixelFormat::Bgra32);
    ImageUtil::ClearPixelAlpha(*window, 96, {24, 16, 96, 64});
    sheet.Mount(OnMat(Convert(*window, PixelFormat::Bgra32Premultiplied)));  // blenders take no straight colours
    return sheet.GetImage();
}

}  // namespace

std::vector<Drawing> UtilityDrawings() {
    return {{"utilities", DrawUtilities}};
}

}  // namespace examples
