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

template <Loop L, CompositeForm F>
constexpr auto kLoops = MakeModeTable([]<BlendMode Mode>() -> ScalarLoop {
    return PaintScalar<Mode, kFormat, kFormat, L, F>;
});

/// A page, or a group that is painted on by the plain loop.
struct ScalarLevel {
    std::shared_ptr<IQorImage> image;
    Point<int, 2> origin{0, 0};                ///< where its first pixel lies on the page
    std::vector<std::uint32_t> alphas = {};    ///< groups: how opaque each pixel of the group is
    std::vector<unsigned char> snapshot = {};  ///< groups: what it started on
};

std::size_t StrideOf(const IQorImage& image) {
    return RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
}

template <CompositeForm F>
ScalarLoop LoopOf(const Paint& paint) {
    const auto mode = static_cast<std::size_t>(paint.mode);
    if (!paint.mask) return kLoops<Loop::Rect, F>[mode];
    return paint.maskTransfer ? kLoops<Loop::SoftMask, F>[mode] : kLoops<Loop::Stencil, F>[mode];
}

std::size_t Distance(int from, int to) {
    return static_cast<std::size_t>(to - from);
}

/// Paints a picture in the rectangles of a call.
void PaintScalarCall(const PageCall& call, const IQorImage& picture, ScalarLevel& level) {
    const bool isGroup = !level.alphas.empty();
    const ScalarLoop loop =
        isGroup ? LoopOf<CompositeForm::Group>(call.paint) : LoopOf<CompositeForm::Plain>(call.paint);
    ScalarTask task{};
    task.targetStride = StrideOf(*level.image);
    task.alpha = call.paint.alpha;
    const IQorImage* const mask = call.paint.mask.get();
    if (mask != nullptr) {
        task.maskStride = StrideOf(*mask);
        task.maskPalette = mask->GetPalette();
        task.maskTransfer = call.paint.maskTransfer.get();
    }
    for (const auto& r : call.rectangles) {
        task.width = Distance(r.x0, r.x1);
        task.height = Distance(r.y0, r.y1);
        task.source = picture.GetPixelData();
        if (!call.isColor) {
            task.sourceStep = kPixelBytes;
            task.sourceStride = StrideOf(picture);
            task.source += Distance(call.at.y, r.y0) * task.sourceStride + Distance(call.at.x, r.x0) * kPixelBytes;
        }
        const std::size_t place =
            Distance(level.origin.y, r.y0) * task.targetStride + Distance(level.origin.x, r.x0) * kPixelBytes;
        task.target = level.image->GetPixelData() + place;
        if (isGroup) {
            task.groupAlpha = level.alphas.data() + place / kPixelBytes;
            task.snapshot = level.snapshot.data() + place;
        }
        if (mask != nullptr) {
            task.mask = mask->GetPixelData() + Distance(call.paint.maskAt.y, r.y0) * task.maskStride;
            task.maskLeft = Distance(call.paint.maskAt.x, r.x0);
        }
        loop(task);
    }
}

ScalarLevel MakeScalarGroup(const Range<int, 2>& bounds) {
    const std::size_t width = Distance(bounds.x0, bounds.x1), height = Distance(bounds.y0, bounds.y1);
    return {std::make_shared<CQorImage>(static_cast<unsigned int>(width), static_cast<unsigned int>(height), kFormat,
                                        static_cast<unsigned char>(4), false),
            {bounds.x0, bounds.y0},
            std::vector<std::uint32_t>(width * height),
            std::vector<unsigned char>(width * height * kPixelBytes)};
}

}  // namespace

void PageScene::Restore() const {
    std::copy(pristine.begin(), pristine.end(), page->GetPixelData());
}

std::size_t PageScene::CountPixels() const {
    std::size_t count = 0;
    for (const PageCall& call : calls) {
        if (call.what == PageCall::What::BeginGroup) continue;
        for (const auto& r : call.rectangles) count += Distance(r.x0, r.x1) * Distance(r.y0, r.y1);
    }
    return count;
}

std::vector<unsigned char> Painted(const PageScene& scene, const std::function<void()>& paint) {
    scene.Restore();
    paint();
    const unsigned char* const pixels = scene.page->GetPixelData();
    return {pixels, pixels + scene.pristine.size()};
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
    return [&scene] {
        std::vector<ScalarLevel> levels;
        levels.push_back({scene.page});
        for (const PageCall& call : scene.calls) {
            if (call.what == PageCall::What::BeginGroup) {
                levels.push_back(MakeScalarGroup(call.rectangles.front()));
            } else if (call.what == PageCall::What::EndGroup) {
                const ScalarLevel group = std::move(levels.back());
                levels.pop_back();
                PaintScalarCall(call, *group.image, levels.back());
            } else {
                PaintScalarCall(call, *call.picture, levels.back());
            }
        }
    };
}

}  // namespace vantu::bench
