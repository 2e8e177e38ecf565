#include "blend/painting/ImageMemory.h"

namespace vantu {

bool InsideMemory(const IQorImage& image, PixelFormat format, int x, int y, const PaintArea& area) {
    const std::int64_t endX = std::int64_t{x} + area.width;
    const std::int64_t endY = std::int64_t{y} + area.height;
    const std::int64_t lastRow = image.IsBottomUp() ? std::int64_t{image.GetHeight()} - 1 - y : endY - 1;
    return x >= 0 && y >= 0 && endY <= image.GetHeight() &&
           lastRow * RowsInMemory(image, format).step + (endX * BitsPerPixel(format) + 7) / 8 <=
               static_cast<std::int64_t>(RowsInMemory(image).Size());
}

std::optional<PixelRows<const unsigned char>> SnapshotRows(const IQorImage& snapshot, PixelFormat format,
                                                           std::int64_t step) {
    if (snapshot.GetPixelFormat() != format || snapshot.GetPalette() != nullptr) return std::nullopt;
    const auto rows = RowsFromTop(snapshot, format);
    return rows.step == step ? std::optional(rows) : std::nullopt;
}

}  // namespace vantu
