#include "blend/painting/ImageBlocks.h"

#include <cstdint>
#include <functional>

#include "pixel/FormatDispatch.h"

namespace vantu {
namespace {

/// Bytes of an image's block.
std::size_t BlockSize(const IQorImage& image) {
    return std::size_t{RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment())} * image.GetHeight();
}

}  // namespace

bool Overlap(const IQorImage& a, const IQorImage& b) {
    const std::less<const unsigned char*> before;
    const unsigned char* const pa = a.GetPixelData();
    const unsigned char* const pb = b.GetPixelData();
    return pa != nullptr && pb != nullptr && before(pa, pb + BlockSize(b)) && before(pb, pa + BlockSize(a));
}

bool InsideBlock(const IQorImage& image, PixelFormat format, int x, int y, const PaintArea& area) {
    const std::int64_t stride = RowStride(image.GetWidth(), format, image.GetAlignment());
    const std::int64_t endX = std::int64_t{x} + area.width;
    const std::int64_t endY = std::int64_t{y} + area.height;
    const std::int64_t lastRow = image.IsBottomUp() ? std::int64_t{image.GetHeight()} - 1 - y : endY - 1;
    return x >= 0 && y >= 0 && endY <= image.GetHeight() &&
           lastRow * stride + (endX * BitsPerPixel(format) + 7) / 8 <= static_cast<std::int64_t>(BlockSize(image));
}

std::optional<RowsFromTop<const unsigned char>> DirectRows(const DynamicAccessor& record, PixelFormat format,
                                                           const RowsFromTop<unsigned char>& like) {
    const unsigned char* const pixels =
        DispatchFormat<const unsigned char*>(format, nullptr, [&]<PixelFormat F>() -> const unsigned char* {
            const auto* const view = dynamic_cast<const Accessor<F>*>(record.accessor.get());
            return view != nullptr && view->rowStep == like.rowStep ? view->pixels : nullptr;
        });
    if (pixels == nullptr) return std::nullopt;
    RowsFromTop<const unsigned char> rows(pixels, 0, 0, format, 0, false);
    rows.rowStep = like.rowStep;
    return rows;
}

}  // namespace vantu
