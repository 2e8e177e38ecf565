#include <vantu/ImageUtil.h>

#include <cstddef>
#include <cstring>
#include <functional>

#include "pixel/DynamicAccessor.h"
#include "pixel/PixelRows.h"

namespace vantu {
namespace {

/// Calls `move(x, y, tx, ty)` for each pixel of a rectangle, from its top left, row by row.
template <typename Move>
void WalkPixels(const Range<int, 2>& range, const Point<int, 2>& target, Move move) {
    const auto left = static_cast<unsigned int>(target.x) - static_cast<unsigned int>(range.x0);
    const auto top = static_cast<unsigned int>(target.y) - static_cast<unsigned int>(range.y0);
    for (int row = range.y0; row < range.y1; ++row) {
        for (int column = range.x0; column < range.x1; ++column) {
            const auto x = static_cast<unsigned int>(column);
            const auto y = static_cast<unsigned int>(row);
            move(x, y, left + x, top + y);
        }
    }
}

/// Whether a pixel is whole bytes that go as they are. Pixels of more than 8 bits do not while their image has a
/// palette: seen through it, they are all 0 and cannot be written.
bool HasWholeBytes(const IQorImage& image) {
    const unsigned int bits = BitsPerPixel(image.GetPixelFormat());
    return bits == 8 || (bits > 8 && image.GetPalette() == nullptr);
}

/// Copies pixels of `size` bytes from left to right. Where the target begins among them, they are written before they
/// are read.
void CopyPixels(const unsigned char* source, unsigned char* target, std::size_t bytes, std::size_t size) {
    const std::less<> before;
    if (!before(source, target) || !before(target, source + bytes)) {
        std::memmove(target, source, bytes);
        return;
    }
    for (std::size_t i = 0; i < bytes; i += size) std::memmove(target + i, source + i, size);
}

void CopyRows(const IQorImage& source, const Range<int, 2>& range, IQorImage& target, const Point<int, 2>& point) {
    const std::size_t size = BitsPerPixel(source.GetPixelFormat()) / 8;
    const auto from = RowsFromTop(source, source.GetPixelFormat());
    const auto to = RowsFromTop(target, target.GetPixelFormat());
    const auto left = static_cast<std::size_t>(range.x0), top = static_cast<std::size_t>(range.y0);
    const auto x = static_cast<std::size_t>(point.x), y = static_cast<std::size_t>(point.y);
    const std::size_t columns = static_cast<std::size_t>(range.x1) - left;
    const std::size_t rows = static_cast<std::size_t>(range.y1) - top;
    for (std::size_t i = 0; i < rows; ++i) {
        CopyPixels(from.Row(top + i) + left * size, to.Row(y + i) + x * size, columns * size, size);
    }
}

}  // namespace

bool ImageUtil::Copy(const IQorImage& source, const Range<int, 2>& sourceRange, IQorImage& target,
                     const Point<int, 2>& targetPoint) {
    // The target point is compared with the source's rectangle: what lies beyond that is silently left out.
    if (sourceRange.x0 > sourceRange.x1) return true;
    if (targetPoint.x > sourceRange.x1 || targetPoint.y > sourceRange.y1) return true;

    if (BitsPerPixel(source.GetPixelFormat()) == 0 || BitsPerPixel(target.GetPixelFormat()) == 0) return false;
    const bool sameFormat = source.GetPixelFormat() == target.GetPixelFormat();
    if (!sameFormat && target.GetPalette() != nullptr) return false;
    if (sourceRange.x0 == sourceRange.x1 || sourceRange.y0 >= sourceRange.y1) return true;
    if (source.GetPixelData() == nullptr || target.GetPixelData() == nullptr) return false;

    if (sameFormat && HasWholeBytes(source) && HasWholeBytes(target)) {
        CopyRows(source, sourceRange, target, targetPoint);
        return true;
    }

    const auto from = MakeConstAccessor(source);
    const auto to = MakeAccessor(target);
    if (!from || !to) return false;
    if (sameFormat) {
        if (from->GetValue == nullptr || to->SetValue == nullptr) return false;
        WalkPixels(sourceRange, targetPoint, [&](unsigned int x, unsigned int y, unsigned int tx, unsigned int ty) {
            to->SetValue(*to, tx, ty, from->GetValue(*from, x, y));
        });
    } else {
        // One colour for the whole walk: a source without colours leaves it black.
        Color color(ARGB_BLACK);
        WalkPixels(sourceRange, targetPoint, [&](unsigned int x, unsigned int y, unsigned int tx, unsigned int ty) {
            from->GetColor(*from, x, y, color);
            to->SetColor(*to, tx, ty, color);
        });
    }
    return true;
}

}  // namespace vantu
