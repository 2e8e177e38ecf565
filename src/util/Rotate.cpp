#include <vantu/ImageUtil.h>

#include <algorithm>

#include "pixel/MakeImage.h"
#include "pixel/PixelRows.h"
#include "util/PaintRows.h"
#include "util/ReverseRow.h"
#include "util/Transpose.h"

namespace vantu {
namespace {

/// Turns a picture by 1, 2 or 3 quarter turns counter-clockwise, rows from its top; `width` is the target's.
void RotateRows(const PixelRows<const unsigned char>& source, const PixelRows<unsigned char>& target, std::size_t width,
                unsigned int bits, int turns) {
    const TurnSteps steps = ActiveTurnSteps(bits);
    if (turns == 1) return Transpose(steps, bits, source, target.Reversed(), width);
    if (turns == 3) return Transpose(steps, bits, source.Reversed(), target, width);
    for (std::size_t i = 0; i < target.count; ++i) {
        ReverseRow(steps, bits, source.Row(target.count - 1 - i), source.Stride(), width - 1, target.Row(i), width);
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
            RotateRows(source.FromTop(bottomUp), target.FromTop(bottomUp), width, bits, turns);
        });
    return painted ? rotated : nullptr;
}

}  // namespace vantu
