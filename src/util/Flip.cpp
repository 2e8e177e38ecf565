#include <vantu/ImageUtil.h>

#include <cstring>

#include "pixel/MakeImage.h"
#include "pixel/PixelRows.h"
#include "util/PaintRows.h"
#include "util/ReverseRow.h"

namespace vantu {
namespace {

using Source = PixelRows<const unsigned char>;
using Target = PixelRows<unsigned char>;

/// Upward through the source, as each row is read: prefetching keeps up with that.
void FlipVertically(const Source& source, const Target& target, std::size_t rowBytes) {
    for (std::size_t i = 0; i < source.count; ++i) {
        std::memcpy(target.Row(source.count - 1 - i), source.Row(i), rowBytes);
    }
}

/// Fields come out one off the mirror image: target field 0 is the one behind the source row's last.
///
/// Rows from the last to the first, so that the source is read downward throughout, which prefetching likes.
void FlipHorizontally(const Source& source, const Target& target, std::size_t width, unsigned int bits) {
    const TurnSteps steps = ActiveTurnSteps(bits);
    const std::size_t last = bits < 8 ? width : width - 1;
    for (std::size_t i = source.count; i-- > 0;) {
        ReverseRow(steps, bits, source.Row(i), source.Size() - i * source.Stride(), last, target.Row(i), width);
    }
}

}  // namespace

std::shared_ptr<IQorImage> ImageUtil::Flip(const IQorImage& image, bool horizontal, bool vertical,
                                           IGraphicsFactory* factory, void** memory) {
    if (horizontal && vertical) return Rotate(image, 2, factory, memory);
    if (!horizontal && !vertical) return Clone(image, factory, memory);

    const unsigned int width = image.GetWidth();
    const PixelFormat format = image.GetPixelFormat();
    auto flipped =
        MakeImage(width, image.GetHeight(), format, image.GetAlignment(), image.IsBottomUp(), factory, memory);
    if (!flipped) return flipped;

    const auto source = RowsInMemory(image);
    if (source.Size() == 0) return flipped;
    if (source.first == nullptr || !RowIsCounted(width, format)) return nullptr;
    const unsigned int stride = RowStride(width, format, flipped->GetAlignment());
    const bool painted = PaintRows(*flipped, stride, source.count, [&](const Target& target) {
        if (vertical) {
            FlipVertically(source, target, RowStride(width, format, 0));
        } else {
            FlipHorizontally(source, target, width, BitsPerPixel(format));
        }
    });
    return painted ? flipped : nullptr;
}

}  // namespace vantu
