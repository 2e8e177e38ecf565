#include <vantu/ImageUtil.h>

#include <algorithm>

#include "pixel/MakeImage.h"
#include "pixel/PixelRows.h"
#include "util/PaintRows.h"
#include "util/QuarterTurn.h"
#include "util/ReverseRow.h"

namespace vantu {
namespace {

/// The rows of a picture, from its top, and of the one it is turned into, which is `width` pixels wide.
struct Rotation {
    PixelRows<const unsigned char> source;
    PixelRows<unsigned char> target;
    std::size_t width;
    int turns;  ///< 1, 2 or 3 quarter turns counter-clockwise
};

template <unsigned int Size>
void RotatePixels(const Rotation& r) {
    const std::size_t height = r.target.count;
    if (r.turns == 2) {
        for (std::size_t i = 0; i < height; ++i) {
            ReversePixels<Size>(r.source.Row(height - 1 - i), r.target.Row(i), r.width);
        }
    } else {
        TurnPixels<Size>(r.turns == 1 ? Turn::CounterClockwise : Turn::Clockwise, r.source.Reversed(),
                         r.target.Reversed(), r.width, height);
    }
}

template <unsigned int Bits>
void RotateFields(const Rotation& r) {
    const std::size_t height = r.target.count;
    if (r.turns == 2) {
        for (std::size_t i = 0; i < height; ++i) {
            ReverseFields<Bits>(r.source.Row(height - 1 - i), r.source.Stride(), r.width - 1, r.target.Row(i), r.width);
        }
    } else {
        TurnFields<Bits>(r.turns == 1 ? Turn::CounterClockwise : Turn::Clockwise, r.source, r.target, r.width, height);
    }
}

void RotateRows(const Rotation& rotation, unsigned int bits) {
    switch (bits) {
        case 1: return RotateFields<1>(rotation);
        case 4: return RotateFields<4>(rotation);
        case 8: return RotatePixels<1>(rotation);
        case 16: return RotatePixels<2>(rotation);
        case 24: return RotatePixels<3>(rotation);
        case 32: return RotatePixels<4>(rotation);
        default: return;
    }
}

}  // namespace

std::shared_ptr<IQorImage> ImageUtil::Rotate(const IQorImage& image, int quarterTurns, IGraphicsFactory* factory,
                                             void** memory) {
    if (quarterTurns == 0) return Clone(image, factory, memory);

    const bool upright = quarterTurns % 2 == 0;
    const unsigned int width = upright ? image.GetWidth() : image.GetHeight();
    const unsigned int height = upright ? image.GetHeight() : image.GetWidth();
    const PixelFormat format = image.GetPixelFormat();
    auto rotated = MakeImage(width, height, format, image.GetAlignment(), image.IsBottomUp(), factory, memory);
    const int turns = (quarterTurns % 4 + 4) % 4;
    if (!rotated || turns == 0) return rotated;

    const unsigned int bits = BitsPerPixel(format);
    // Rows of whole bytes are laid by the source's alignment, packed ones by the new image's own.
    const unsigned char alignment = bits < 8 ? rotated->GetAlignment() : image.GetAlignment();
    const auto source = RowsInMemory(image);
    if (source.Size() == 0) return rotated;
    if (source.first == nullptr || !RowIsCounted(std::max(width, image.GetWidth()), format)) return nullptr;
    const bool bottomUp = image.IsBottomUp();
    const bool painted =
        PaintRows(*rotated, RowStride(width, format, alignment), height, [&](const PixelRows<unsigned char>& target) {
            RotateRows({source.FromTop(bottomUp), target.FromTop(bottomUp), width, turns}, bits);
        });
    return painted ? rotated : nullptr;
}

}  // namespace vantu
