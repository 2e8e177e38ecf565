#include <vantu/ImageUtil.h>

#include <algorithm>
#include <cstring>

#include "pixel/MakeImage.h"
#include "util/MemoryBlock.h"

namespace vantu {

std::shared_ptr<IQorImage> ImageUtil::Clone(const IQorImage& image, IGraphicsFactory* factory, void** memory) {
    auto clone = MakeImage(image.GetWidth(), image.GetHeight(), image.GetPixelFormat(), image.GetAlignment(),
                           image.IsBottomUp(), factory, memory);
    if (!clone) return clone;

    // Rows are looked for in the source at the new image's stride, so both blocks are one run of bytes each.
    const auto source = BlockOf(image);
    const auto target = BlockOf(*clone);
    const std::size_t common = std::min(source.Size(), target.Size());
    if (target.Size() > 0 && target.data == nullptr) return nullptr;
    if (common > 0 && source.data == nullptr) return nullptr;
    if (common > 0) std::memcpy(target.data, source.data, common);
    if (target.Size() > common) std::memset(target.data + common, 0, target.Size() - common);
    return clone;
}

}  // namespace vantu
