#include "blend/CPDFImageBlender.h"

#include <vantu/ImageUtil.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "blend/CheckedRanges.h"
#include "blend/Coverage.h"
#include "blend/GroupResolve.h"
#include "pixel/Formats.h"
#include "pixel/MakeImage.h"
#include "pixel/PixelRows.h"

namespace vantu {

using PDFBlend::BlendingTraits;
using PDFBlend::GroupBlendingTraits;

namespace {

/// The kernel of a key; null unless its destination is of format 1 to 9, its source of 5 to 8, and its mode is one.
template <typename Traits>
const CPDFImageBlender::PixelBlendBase<Traits>* Find(const CPDFImageBlender::PixelBlends<Traits>& kernels,
                                                     BlendKey key) {
    constexpr std::size_t n = kPixelFormats.size();
    const std::size_t destination = (key >> 16) - 1, source = (key >> 8 & 0xFF) - 1, mode = key & 0xFF;
    const bool known = destination < n && source < n && mode < kBlendModeCount;
    return known ? kernels[(destination * n + source) * kBlendModeCount + mode].get() : nullptr;
}

/// Paints with the kernel of the images' formats and the mode. @return false if there is none, or if it refuses.
template <typename Traits>
bool BlendOnImage(const CPDFImageBlender::PixelBlends<Traits>& kernels, IQorImage& destination, IQorImage& source,
                  BlendRequest<Traits>& request, BlendMode mode) {
    const BlendKey key = MakeBlendKey(destination.GetPixelFormat(), source.GetPixelFormat(), mode);
    const auto* const kernel = Find<Traits>(kernels, key);
    return kernel != nullptr && MayPaint(request, &destination, source) &&
           kernel->Blend(&destination, &source, &request);
}

/// Whether ranges leave a coverage as it is that they are added to: each lies in the only one that it has.
bool AreInside(const std::vector<Range<int, 2>>& ranges, const std::vector<Range<int, 2>>& coverage) {
    return coverage.size() == 1 && std::ranges::all_of(ranges, [&all = coverage.front()](const Range<int, 2>& r) {
               return all.x0 <= r.x0 && r.x0 <= r.x1 && r.x1 <= all.x1 && all.y0 <= r.y0 && r.y0 <= r.y1 &&
                      r.y1 <= all.y1;
           });
}

/// Whether pixels have memory, and no byte but 0.
bool AreClear(const PixelRows<const unsigned char>& pixels) {
    const auto size = static_cast<std::size_t>(pixels.Size());
    return pixels.first != nullptr && size != 0 && pixels.first[0] == 0 &&
           std::memcmp(pixels.first, pixels.first + 1, size - 1) == 0;
}

/// Makes the snapshot of a group a copy of an image: in its own memory, if it is one of such an image already. One that
/// is clear need not be written.
void TakeSnapshot(const IQorImage& image, GroupState& group) {
    std::shared_ptr<IQorImage>& snapshot = group.backdrop;
    const auto pixels = RowsInMemory(image);
    const bool fits = snapshot && pixels.first != nullptr && snapshot->GetWidth() == image.GetWidth() &&
                      snapshot->GetHeight() == image.GetHeight() &&
                      snapshot->GetPixelFormat() == image.GetPixelFormat() &&
                      snapshot->GetAlignment() == image.GetAlignment() && snapshot->IsBottomUp() == image.IsBottomUp();
    const bool wasClear = std::exchange(group.startsClear, AreClear(pixels));
    if (fits) {
        if (wasClear && group.startsClear) return;
        std::memcpy(snapshot->GetPixelData(), pixels.first, static_cast<std::size_t>(pixels.Size()));
    } else if (group.startsClear) {
        snapshot = nullptr;
        snapshot = MakeImage(image.GetWidth(), image.GetHeight(), image.GetPixelFormat(), image.GetAlignment(),
                             image.IsBottomUp(), nullptr, nullptr);
    } else {
        snapshot = nullptr;
        snapshot = ImageUtil::Clone(image, nullptr, nullptr);
    }
}

/// Makes `alphas` those of a group on which nothing is painted: in their own memory, cleared in the rows of an image
/// that were painted, if there are enough.
void TakeGroupAlpha(std::size_t pixels, std::size_t width, const RowSpan& painted, GroupAlphas& alphas) {
    if (alphas.capacity() < pixels) {
        alphas = {};
    } else {
        const std::size_t end = std::min(width * painted.end, alphas.size());
        for (std::size_t i = width * painted.first; i < end; ++i) alphas[i] = 0;
    }
    alphas.resize(pixels);
}

}  // namespace

std::shared_ptr<IPDFImageBlender> IPDFImageBlender::Create(std::shared_ptr<IRasterizer>& rasterizer,
                                                           const std::shared_ptr<IQorImage>& image) {
    if (!rasterizer) return nullptr;
    return std::make_shared<CPDFImageBlender>(rasterizer, image);
}

CPDFImageBlender::CPDFImageBlender(std::shared_ptr<IRasterizer> rasterizer, std::shared_ptr<IQorImage> image)
    : image_(std::move(image)),
      rasterizer_(std::move(rasterizer)),
      surface_(image_ ? nullptr : rasterizer_->GetRasterSurface()),
      groupRasterizerBlends_(MakeRasterizerBlends<GroupBlendingTraits>()),
      rasterizerBlends_(MakeRasterizerBlends<BlendingTraits>()),
      groupPixelBlends_(MakePixelBlends<GroupBlendingTraits>()),
      pixelBlends_(MakePixelBlends<BlendingTraits>()) {
    groupStack_.reserve(3);
}

CPDFImageBlender::~CPDFImageBlender() = default;

bool CPDFImageBlender::Blend(const std::shared_ptr<IQorImage>& source, const std::shared_ptr<Coverage>& coverage,
                             const Point<int, 2>& offset, const std::shared_ptr<IQorImage>& mask,
                             const std::shared_ptr<IPDFTransferFunction>& maskTransfer, const Point<int, 2>& maskOffset,
                             unsigned char alpha, BlendMode mode, std::shared_ptr<Coverage>& blended) {
    const bool inGroup = !groupStack_.empty();
    if (!inGroup && !image_ && !surface_) return false;
    if (!coverage || !source || std::as_const(*source).GetPixelData() == nullptr) return false;
    if (alpha == 0) return true;
    if (!blended) blended = CreateCoverage();

    // What may lack memory comes before the first pixel, so that an exception finds nothing half recorded.
    std::shared_ptr<Coverage> painted = CopyOf(*coverage);
    const bool foreign = static_cast<BlendKey>(mode) > 255;  // it runs into the formats of the key
    const BlendRequestBase common{coverage.get(), &offset, &mask, &maskTransfer, &maskOffset, &alpha, foreign};
    if (!inGroup) {
        BlendRequest<BlendingTraits> request{common, blended.get()};
        if (!BlendOnDestination(*source, request, mode)) return false;
        blended = std::move(painted);
        return true;
    }

    GroupState& top = groupStack_.back();
    const unsigned int width = top.image->GetWidth();
    BlendRequest<GroupBlendingTraits> request{
        common, top.backdrop.get(), &top.groupAlpha, &top.groupAlphaFits, &top.paintedRows,
        &width, &top.knockout,      blended.get()};
    std::shared_ptr<Coverage> total = top.coverage;
    if (!total || !AreInside(painted->GetRanges(), total->GetRanges())) {
        total = total ? CopyOf(*total) : CreateCoverage();
        total->AddCoverage(*painted);
    }
    if (!BlendOnImage(groupPixelBlends_, *top.image, *source, request, mode)) return false;
    blended = std::move(painted);
    top.coverage = std::move(total);
    return true;
}

bool CPDFImageBlender::BlendOnDestination(IQorImage& source, BlendRequest<BlendingTraits>& request, BlendMode mode) {
    if (image_) return BlendOnImage(pixelBlends_, *image_, source, request, mode);
    const std::unique_ptr<DynamicAccessor> colors = MakeConstAccessor(source);
    const auto index = static_cast<std::size_t>(mode);
    return colors && index < rasterizerBlends_.size() && MayPaint(request, nullptr, source) &&
           rasterizerBlends_[index]->Blend(surface_.get(), colors.get(), &request);
}

bool CPDFImageBlender::BeginGroup(const std::shared_ptr<IQorImage>& image, const std::shared_ptr<void>& heldObject,
                                  bool knockout, bool keepBackdrop, bool plainResolve) {
    if (!image) return true;
    const std::uint64_t pixels = std::uint64_t{image->GetWidth()} * image->GetHeight();
    if (pixels == 0) return true;
    if (pixels > spare_.groupAlpha.max_size()) throw std::bad_alloc();
    GroupState group = std::exchange(spare_, {});
    const std::size_t width = group.backdrop ? group.backdrop->GetWidth() : 0;
    TakeGroupAlpha(static_cast<std::size_t>(pixels), width, std::exchange(group.paintedRows, {}), group.groupAlpha);
    TakeSnapshot(*image, group);
    if (!group.backdrop) return true;
    group.image = image;
    group.heldObject = heldObject;
    group.knockout = knockout;
    group.keepBackdrop = keepBackdrop;
    group.plainResolve = plainResolve;
    groupStack_.push_back(std::move(group));
    return true;
}

bool CPDFImageBlender::EndGroup() {
    if (groupStack_.empty()) return false;
    GroupState& top = groupStack_.back();
    if (top.coverage) ResolveGroup(top);
    spare_ = {};
    spare_.backdrop = std::move(top.backdrop);
    spare_.startsClear = top.startsClear;
    spare_.groupAlpha = std::move(top.groupAlpha);
    spare_.paintedRows = top.paintedRows;
    groupStack_.pop_back();
    return true;
}

}  // namespace vantu
