#include "BlendBench.h"

#include <benchmark/benchmark.h>
#include <vantu/IPDFImageBlender.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BlendScene.h"
#include "PixmanPeer.h"
#include "Timing.h"

namespace vantu::bench {
namespace {

using Pixels = std::vector<unsigned char>;

/// One way to paint a scene: the whole column at each call.
struct Painter {
    std::function<void()> paint;
    std::function<void()> reset = [] {};  ///< after the target's pixels have been put back
};

/// Through the public interface.
Painter MakeLibraryPainter(const BlendCase& c, const BlendScene& scene) {
    const auto size = static_cast<int>(c.size);
    const std::shared_ptr<IPDFImageBlender> blender = MakeBlender(scene.target);
    // Ranges are places in the destination without a mask, in the source with one.
    std::vector<std::shared_ptr<IPDFImageBlender::Coverage>> places;
    std::vector<Point<int, 2>> offsets;
    for (int i = 0; i < static_cast<int>(scene.copies); ++i) {
        const int y = i * size;
        places.emplace_back(IPDFImageBlender::CreateCoverage());
        places.back()->AddRange(scene.mask ? Range<int, 2>{0, 0, size, size} : Range<int, 2>{0, y, size, y + size});
        offsets.push_back({0, scene.mask ? y : -y});
    }
    Painter painter;
    painter.paint = [=, blended = std::shared_ptr<IPDFImageBlender::Coverage>(), &scene]() mutable {
        for (std::size_t i = 0; i < places.size(); ++i) {
            blender->Blend(scene.source, places[i], offsets[i], scene.mask, scene.maskTransfer, {0, 0}, c.Alpha(),
                           c.mode, blended);
        }
    };
    if (c.form != CompositeForm::Plain) {
        // With the backdrop kept, the end of a group leaves the image alone.
        painter.reset = [=, &scene] {
            blender->EndGroup();
            blender->BeginGroup(scene.target, nullptr, c.form == CompositeForm::Knockout, true, false);
        };
        painter.reset();
    }
    return painter;
}

Painter MakeScalarPainter(const BlendCase& c, const BlendScene& scene) {
    const std::size_t pixels = std::size_t{c.size} * c.size;
    auto groupAlpha =
        std::make_shared<std::vector<std::uint32_t>>(c.form == CompositeForm::Plain ? 0 : pixels * scene.copies);
    const CQorImage* const mask = scene.mask.get();
    ScalarTask task{};
    task.width = task.height = c.size;
    task.source = std::as_const(*scene.source).GetPixelData();
    task.sourceStep = BitsPerPixel(c.source) / 8;
    task.sourceStride = c.size * task.sourceStep;
    task.targetStride = scene.TargetBytes() / c.size;
    task.mask = mask != nullptr ? mask->GetPixelData() : nullptr;
    task.maskStride = mask != nullptr ? c.size * BitsPerPixel(mask->GetPixelFormat()) / 8 : 0;
    task.maskPalette = mask != nullptr ? mask->GetPalette() : nullptr;
    task.maskTransfer = scene.maskTransfer.get();
    task.alpha = c.Alpha();
    Painter painter;
    painter.paint = [=, &scene]() mutable {
        for (std::size_t i = 0; i < scene.copies; ++i) {
            const std::size_t place = i * scene.TargetBytes();
            task.target = scene.target->GetPixelData() + place;
            task.snapshot = scene.Pristine().data() + place;
            task.groupAlpha = groupAlpha->data() + (groupAlpha->empty() ? 0 : i * pixels);
            c.scalar(task);
        }
    };
    painter.reset = [=] { std::fill(groupAlpha->begin(), groupAlpha->end(), 0); };
    return painter;
}

void Restore(const BlendScene& scene, const Painter& painter) {
    std::memcpy(scene.target->GetPixelData(), scene.Pristine().data(), scene.Pristine().size());
    painter.reset();
}

Pixels Painted(const BlendScene& scene, const Painter& painter) {
    Restore(scene, painter);
    painter.paint();
    const unsigned char* const pixels = scene.target->GetPixelData();
    return {pixels, pixels + scene.Pristine().size()};
}

/// Times `painter`, each time on fresh content.
void MeasureScene(benchmark::State& state, const BlendScene& scene, const Painter& painter) {
    Measure(
        state, [&] { Restore(scene, painter); }, painter.paint, scene.copies,
        std::size_t{scene.target->GetWidth()} * scene.target->GetHeight());
}

/// Whether a painter draws what the scalar loop draws; found out once for a name.
bool Draws(const std::string& name, const BlendCase& c, const BlendScene& scene, const Painter& painter,
           const std::function<bool(const Pixels&, const Pixels&)>& alike) {
    return IsRight(name, [&] { return alike(Painted(scene, painter), Painted(scene, MakeScalarPainter(c, scene))); });
}

void RunLibrary(benchmark::State& state, const BlendCase& c) {
    const BlendScene scene(c);
    const Painter painter = MakeLibraryPainter(c, scene);
    if (!Draws("Blend/" + c.Name(), c, scene, painter, Same)) {
        state.SkipWithError("does not draw what the scalar loop draws");
        return;
    }
    MeasureScene(state, scene, painter);
}

void RunScalar(benchmark::State& state, const BlendCase& c) {
    const BlendScene scene(c);
    MeasureScene(state, scene, MakeScalarPainter(c, scene));
}

void RunPixman(benchmark::State& state, const BlendCase& c) {
    const BlendScene scene(c);
    const Painter painter{MakePixmanPainter(c, scene)};
    if (!Draws("Pixman/" + c.Name(), c, scene, painter, [](const Pixels& a, const Pixels& b) { return Alike(a, b); })) {
        state.SkipWithError("does not draw nearly what the scalar loop draws");
        return;
    }
    MeasureScene(state, scene, painter);
}

/// Fills the target from the source's bytes.
void RunMemcpy(benchmark::State& state, const BlendCase& c) {
    const BlendScene scene(c);
    const Painter painter{[&scene] {
        for (std::size_t i = 0; i < scene.copies; ++i) {
            std::memcpy(scene.target->GetPixelData() + i * scene.TargetBytes(),
                        std::as_const(*scene.source).GetPixelData(), scene.TargetBytes());
        }
    }};
    MeasureScene(state, scene, painter);
}

void Register(const std::string& name, void (*run)(benchmark::State&, const BlendCase&), const BlendCase& c) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { run(state, c); })->UseManualTime();
}

}  // namespace

void RegisterBlendBenchmarks() {
    std::set<std::string> copies;
    for (const BlendCase& c : BlendCases()) {
        Register("Blend/" + c.Name(), RunLibrary, c);
        Register("Scalar/" + c.Name(), RunScalar, c);
        if (HasPixmanPeer(c)) Register("Pixman/" + c.Name(), RunPixman, c);
        BlendCase copied = c;
        copied.source = c.destination;
        const std::string copy =
            "Memcpy/" + std::to_string(BitsPerPixel(c.destination)) + "bit/" + std::to_string(c.size);
        if (copies.insert(copy).second) Register(copy, RunMemcpy, copied);
    }
}

}  // namespace vantu::bench
