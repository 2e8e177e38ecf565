#include "GroupBench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "BlendScene.h"
#include "ScalarLoop.h"
#include "Timing.h"
#include "blend/definition/ResolveSteps.h"

namespace vantu::bench {
namespace {

constexpr unsigned int kSide = 256;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;
constexpr int kPaintings = 50;  ///< told, as what ends in no time would be painted for hours
constexpr auto kFormat = PixelFormat::Bgra32Premultiplied;

/// What the end of a group does.
struct Ending {
    const char* name;
    bool keepBackdrop;
    bool plainResolve;
    void (*step)(unsigned char* pixel, const unsigned char* backdrop, std::uint32_t groupAlpha);
};

constexpr Ending kEndings[] = {
    {"nothing", true, false, [](unsigned char*, const unsigned char*, std::uint32_t) {}},
    {"RemoveBackdrop", false, false, RemoveBackdrop},
    {"RescaleToGroupAlpha", false, true, RescaleToGroupAlpha},
    {"MixWithBackdrop", true, true, MixWithBackdrop},
};

std::shared_ptr<CQorImage> MakeImage(const std::vector<unsigned char>& pixels) {
    auto image = std::make_shared<CQorImage>(kSide, kSide, kFormat, static_cast<unsigned char>(0), false);
    std::copy(pixels.begin(), pixels.end(), image->GetPixelData());
    return image;
}

/// What the plain loop makes of a group, resolved pixel by pixel.
std::vector<unsigned char> PaintScalarGroup(const std::vector<unsigned char>& source,
                                            const std::vector<unsigned char>& backdrop, const Ending& ending) {
    std::vector<unsigned char> pixels = backdrop;
    std::vector<std::uint32_t> alphas(kPixels);
    ScalarTask task{};
    task.width = task.height = kSide;
    task.source = source.data();
    task.sourceStep = 4;
    task.sourceStride = task.targetStride = kSide * task.sourceStep;
    task.target = pixels.data();
    task.snapshot = backdrop.data();
    task.groupAlpha = alphas.data();
    task.alpha = 255;
    PaintScalar<BlendMode::Normal, kFormat, kFormat, Loop::Rect, CompositeForm::Group>(task);
    for (std::size_t i = 0; i < kPixels; ++i) ending.step(&pixels[4 * i], &backdrop[4 * i], alphas[i]);
    return pixels;
}

/// Random alphas painted in a group that starts on other pixels. @param whole times all of it, not the end alone.
void Run(benchmark::State& state, const Ending& ending, Alphas backdrop, bool whole) {
    const auto pristine = MakePixels(kFormat, backdrop, kPixels, 2);
    const std::shared_ptr<IQorImage> image = MakeImage(*pristine);
    const auto painted = MakePixels(kFormat, Alphas::Random, kPixels, 1);
    const std::shared_ptr<IQorImage> source = MakeImage(*painted);
    const auto blender = MakeBlender(image);
    const std::shared_ptr<IPDFImageBlender::Coverage> coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange({0, 0, static_cast<int>(kSide), static_cast<int>(kSide)});
    std::shared_ptr<IPDFImageBlender::Coverage> blended;
    const auto restore = [&] { std::copy(pristine->begin(), pristine->end(), image->GetPixelData()); };
    const auto begin = [&] {
        blender->BeginGroup(image, nullptr, false, ending.keepBackdrop, ending.plainResolve);
        blender->Blend(source, coverage, {0, 0}, nullptr, nullptr, {0, 0}, 255, BlendMode::Normal, blended);
    };
    const auto end = [&] { blender->EndGroup(); };
    const auto all = [&] {
        begin();
        end();
    };
    const auto prepare = [&] {
        restore();
        begin();
    };
    restore();
    all();
    const unsigned char* const result = image->GetPixelData();
    if (PaintScalarGroup(*painted, *pristine, ending) != std::vector(result, result + pristine->size())) {
        state.SkipWithError("does not draw what the scalar loop draws");
        return;
    }
    if (whole) {
        Measure(state, restore, all, 1, kPixels);
    } else {
        Measure(state, prepare, end, 1, kPixels);
    }
}

}  // namespace

void RegisterGroupBenchmarks() {
    for (const Ending& ending : kEndings) {
        for (const Alphas backdrop : {Alphas::Opaque, Alphas::Random}) {
            for (const bool whole : {false, true}) {
                const std::string name = std::string("Groups/") + (whole ? "All" : "End") + '/' + ending.name +
                                         (backdrop == Alphas::Opaque ? "/b" : "/c");
                benchmark::RegisterBenchmark(
                    name.c_str(), [=, &ending](benchmark::State& state) { Run(state, ending, backdrop, whole); })
                    ->UseManualTime()
                    ->Iterations(kPaintings);
            }
        }
    }
}

}  // namespace vantu::bench
