#include "painter/ElementShape.h"

#include <vantu/ImageUtil.h>

#include <optional>

namespace vantu {
namespace {

constexpr int kMostPixels = 1024;  ///< of a row at a time

const unsigned char* RowOf(const IQorImage& image, int y) {
    const std::size_t stride = RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    const auto row = static_cast<unsigned int>(y);
    return image.GetPixelData() + stride * (image.IsBottomUp() ? image.GetHeight() - 1 - row : row);
}

}  // namespace

/// Replaces ranges by their runs, row by row. `markClear(x, y, has, count)` sets to 0 what belongs to none, of `count`
/// pixels from (x, y) of the image on.
template <typename MarkClear>
void ElementShape::Cut(std::vector<Rectangle>& ranges, const Point<int, 2>& at, MarkClear markClear) {
    runs_.clear();
    has_.resize(kMostPixels);
    for (const Rectangle& range : ranges) {
        for (int y = range.y0; y < range.y1; ++y) {
            for (int x = range.x0; x < range.x1;) {
                const int count = std::min(range.x1 - x, kMostPixels);
                const auto end = has_.begin() + count;
                std::fill(has_.begin(), end, 1);
                const auto [imageX, imageY] = Difference({x, y}, at);
                markClear(imageX, imageY, has_.data(), count);
                for (auto first = std::find(has_.begin(), end, 1); first != end;) {
                    const auto last = std::find(first, end, 0);
                    runs_.push_back({x + static_cast<int>(first - has_.begin()), y,
                                     x + static_cast<int>(last - has_.begin()), y + 1});
                    first = std::find(last, end, 1);
                }
                x += count;
            }
        }
    }
    ranges.swap(runs_);
}

void ElementShape::CutToPicture(std::vector<Rectangle>& ranges, const IQorImage& picture, const Point<int, 2>& at) {
    const unsigned char clear = picture.GetPixelFormat() == PixelFormat::Bgra32Inverted ? 255 : 0;
    Cut(ranges, at, [&](int x, int y, unsigned char* has, int count) {
        const unsigned char* const alpha = RowOf(picture, y) + std::ptrdiff_t{x} * 4 + 3;
        for (int i = 0; i < count; ++i) {
            if (alpha[std::ptrdiff_t{i} * 4] == clear) has[i] = 0;
        }
    });
}

void ElementShape::CutToStencil(std::vector<Rectangle>& ranges, const IQorImage& stencil, const Point<int, 2>& at) {
    Cut(ranges, at, [&](int x, int y, unsigned char* has, int count) {
        const unsigned char* const row = RowOf(stencil, y);
        for (int i = 0; i < count; ++i) {
            const int column = x + i;
            if ((row[column / 8] >> (7 - column % 8) & 1) != 0) has[i] = 0;
        }
    });
}

void ElementShape::CutToMask(std::vector<Rectangle>& ranges, const IQorImage& mask, const Point<int, 2>& at,
                             const IPDFTransferFunction& transfer) {
    if (!colors_) colors_ = std::make_shared<CQorImage>(kMostPixels, 1U, PixelFormat::Bgra32, 4, false);
    Cut(ranges, at, [&](int x, int y, unsigned char* has, int count) {
        if (!ImageUtil::Copy(mask, {x, y, x + count, y + 1}, *colors_, {0, 0})) return;
        const unsigned char* const pixels = colors_->GetPixelData();
        // Neighbours are often alike.
        std::optional<unsigned int> asked;
        bool clear = false;
        for (int i = 0; i < count; ++i) {
            const unsigned char* const pixel = pixels + std::ptrdiff_t{i} * 4;
            unsigned int packed = 0;
            for (const int channel : {3, 2, 1, 0}) packed = packed << 8 | pixel[channel];
            if (packed != asked) {
                asked = packed;
                clear = !(transfer.ComputeAlpha(Color(packed)) * 255.0 >= 1.0);
            }
            if (clear) has[i] = 0;
        }
    });
}

}  // namespace vantu
