#include "blend/painting/ImageMemory.h"

#include <cstdint>
#include <functional>

#include "pixel/Accessor.h"
#include "pixel/Formats.h"

namespace vantu {

bool Overlap(const IQorImage& a, const IQorImage& b) {
    const std::less<const unsigned char*> before;
    const auto ra = RowsInMemory(a), rb = RowsInMemory(b);
    return ra.first != nullptr && rb.first != nullptr && before(ra.first, rb.Row(rb.count)) &&
           before(rb.first, ra.Row(ra.count));
}

bool InsideMemory(const IQorImage& image, PixelFormat format, int x, int y, const PaintArea& area) {
    const std::int64_t endX = std::int64_t{x} + area.width;
    const std::int64_t endY = std::int64_t{y} + area.height;
    const std::int64_t lastRow = image.IsBottomUp() ? std::int64_t{image.GetHeight()} - 1 - y : endY - 1;
    return x >= 0 && y >= 0 && endY <= image.GetHeight() &&
           lastRow * RowsInMemory(image, format).step + (endX * BitsPerPixel(format) + 7) / 8 <=
               static_cast<std::int64_t>(RowsInMemory(image).Size());
}

std::optional<PixelRows<const unsigned char>> DirectRows(const DynamicAccessor& record, PixelFormat format,
                                                         const PixelRows<unsigned char>& like) {
    const unsigned char* const pixels =
        DispatchFormat<const unsigned char*>(format, nullptr, [&]<PixelFormat F>() -> const unsigned char* {
            const auto* const view = dynamic_cast<const Accessor<F>*>(record.accessor.get());
            return view != nullptr && view->rowStep == like.step ? view->pixels : nullptr;
        });
    if (pixels == nullptr) return std::nullopt;
    return PixelRows<const unsigned char>{pixels, like.step, like.count};
}

}  // namespace vantu
