#include <vantu/ImageUtil.h>

#include <algorithm>
#include <cstdint>
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
    const std::uint64_t common = std::min(source.Size(), target.Size());
    if (target.Size() > 0 && target.first == nullptr) return nullptr;
    if (common > 0 && source.first == nullptr) return nullptr;
    if (common > 0) std::memcpy(target.first, source.first, common);
    if (target.Size() > common) std::memset(target.first + common, 0, target.Size() - common);
    return clone;
}

}  // namespace vantu
