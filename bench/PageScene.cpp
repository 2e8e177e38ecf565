#include "PageScene.h"

#include <algorithm>
#include <array>
#include <utility>

#include "BlendScene.h"
#include "ScalarLoop.h"
#include "blend/definition/ModeTable.h"

namespace vantu::bench {
namespace {

constexpr auto kFormat = PixelFormat::Bgra32Premultiplied;
constexpr std::size_t kPixelBytes = 4;

template <Loop L>
constexpr auto kLoops = MakeModeTable([]<BlendMode Mode>() -> ScalarLoop {
    return PaintScalar<Mode, kFormat, kFormat, L, CompositeForm::Plain>;
});

std::size_t StrideOf(const IQorImage& image) {
    return RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
}

bool IsStencil(const Paint& paint) {
    return paint.mask && paint.mask->GetPixelFormat() == PixelFormat::Index1;
}

ScalarLoop LoopOf(const Paint& paint) {
    const auto mode = static_cast<std::size_t>(paint.mode);
    if (!paint.mask) return kLoops<Loop::Rect>[mode];
    return IsStencil(paint) ? kLoops<Loop::Stencil>[mode] : kLoops<Loop::SoftMask>[mode];
}

/// One rectangle of a call on a page.
ScalarTask TaskOf(const PageCall& call, const Range<int, 2>& r, CQorImage& page) {
    const auto distance = [](int from, int to) { return static_cast<std::size_t>(to - from); };
    const IQorImage& picture = *call.picture;
    ScalarTask task{};
    task.width = distance(r.x0, r.x1);
    task.height = distance(r.y0, r.y1);
    task.source = picture.GetPixelData();
    if (!call.isColor) {
        task.sourceStep = kPixelBytes;
        task.sourceStride = StrideOf(picture);
        task.source += distance(call.at.y, r.y0) * task.sourceStride + distance(call.at.x, r.x0) * kPixelBytes;
    }
    task.targetStride = StrideOf(page);
    task.target = page.GetPixelData() + distance(0, r.y0) * task.targetStride + distance(0, r.x0) * kPixelBytes;
    task.alpha = call.paint.alpha;
    if (const IQorImage* const mask = call.paint.mask.get(); mask != nullptr) {
        task.maskStride = StrideOf(*mask);
        task.mask = mask->GetPixelData() + distance(call.paint.maskAt.y, r.y0) * task.maskStride;
        task.maskLeft = distance(call.paint.maskAt.x, r.x0);
        task.maskPalette = mask->GetPalette();
        task.maskTransfer = call.paint.maskTransfer.get();
    }
    return task;
}

}  // namespace

void PageScene::Restore() const {
    std::copy(pristine.begin(), pristine.end(), page->GetPixelData());
}

std::size_t PageScene::CountPixels() const {
    std::size_t count = 0;
    for (const PageCall& call : calls) {
        for (const auto& r : call.rectangles)
            count += static_cast<std::size_t>(r.x1 - r.x0) * static_cast<std::size_t>(r.y1 - r.y0);
    }
    return count;
}

std::function<void()> MakeBlendReplay(const PageScene& scene) {
    const std::shared_ptr<IPDFImageBlender> blender = MakeBlender(scene.page);
    std::vector<std::shared_ptr<IPDFImageBlender::Coverage>> places;
    std::vector<Point<int, 2>> offsets, maskOffsets;
    for (const PageCall& call : scene.calls) {
        // Ranges are places on the page without a mask, in the picture with one.
        const auto [x, y] = call.at;
        const bool masked = call.paint.mask != nullptr;
        places.push_back(IPDFImageBlender::CreateCoverage());
        for (const auto& r : call.rectangles) {
            places.back()->AddRange(masked ? Range<int, 2>{r.x0 - x, r.y0 - y, r.x1 - x, r.y1 - y} : r);
        }
        offsets.push_back(masked ? call.at : Point<int, 2>{-x, -y});
        maskOffsets.push_back({call.paint.maskAt.x - x, call.paint.maskAt.y - y});
    }
    return [=, blended = std::shared_ptr<IPDFImageBlender::Coverage>(), &scene]() mutable {
        for (std::size_t i = 0; i < places.size(); ++i) {
            const PageCall& call = scene.calls[i];
            blender->Blend(call.picture, places[i], offsets[i], call.paint.mask, call.paint.maskTransfer,
                           maskOffsets[i], call.paint.alpha, call.paint.mode, blended);
        }
    };
}

std::function<void()> MakeScalarReplay(const PageScene& scene) {
    std::vector<std::pair<ScalarLoop, ScalarTask>> tasks;
    for (const PageCall& call : scene.calls) {
        for (const auto& r : call.rectangles) tasks.emplace_back(LoopOf(call.paint), TaskOf(call, r, *scene.page));
    }
    return [tasks] {
        for (const auto& [loop, task] : tasks) loop(task);
    };
}

}  // namespace vantu::bench
