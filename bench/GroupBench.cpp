#include "GroupBench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

#include "BlendScene.h"
#include "Timing.h"

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
};

constexpr Ending kEndings[] = {
    {"nothing", true, false},
    {"RemoveBackdrop", false, false},
    {"RescaleToGroupAlpha", false, true},
    {"MixWithBackdrop", true, true},
};

std::shared_ptr<CQorImage> MakeImage(const std::vector<unsigned char>& pixels) {
    auto image = std::make_shared<CQorImage>(kSide, kSide, kFormat, static_cast<unsigned char>(0), false);
    std::copy(pixels.begin(), pixels.end(), image->GetPixelData());
    return image;
}

/// Random alphas painted in a group that starts on other pixels. @param whole times all of it, not the end alone.
void Run(benchmark::State& state, const Ending& ending, Alphas backdrop, bool whole) {
    const auto pristine = MakePixels(kFormat, backdrop, kPixels, 2);
    const std::shared_ptr<IQorImage> image = MakeImage(*pristine);
    const std::shared_ptr<IQorImage> source = MakeImage(*MakePixels(kFormat, Alphas::Random, kPixels, 1));
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
