#include <vantu/ImageUtil.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "pixel/MakeImage.h"
#include "pixel/PixelRows.h"

namespace vantu {

std::shared_ptr<IQorImage> ImageUtil::Clone(const IQorImage& image, IGraphicsFactory* factory, void** memory) {
    auto clone = MakeImage(image.GetWidth(), image.GetHeight(), image.GetPixelFormat(), image.GetAlignment(),
                           image.IsBottomUp(), factory, memory);
    if (!clone) return clone;

    // Rows are looked for in the source at the new image's stride, so both blocks are one run of bytes each.
    const auto source = RowsInMemory(image);
    const auto target = RowsInMemory(*clone);
    const auto size = static_cast<std::size_t>(target.Size());
    const auto common = static_cast<std::size_t>(std::min(source.Size(), target.Size()));
    if (size > 0 && target.first == nullptr) return nullptr;
    if (common > 0 && source.first == nullptr) return nullptr;
    if (common > 0) std::memcpy(target.first, source.first, common);
    if (size > common) std::memset(target.first + common, 0, size - common);
    return clone;
}

}  // namespace vantu
