#include "SetupBench.h"

#include <benchmark/benchmark.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/ImageUtil.h>
#include <vantu/Painter.h>

#include <cstring>
#include <string>
#include <vector>

#include "BlendScene.h"

namespace vantu::bench {
namespace {

using Coverage = IPDFImageBlender::Coverage;

constexpr unsigned int kGroupSize = 256;

/// A square whose bytes are all `value`: 255 is opaque white, 128 half transparent white.
std::shared_ptr<CQorImage> MakeSquare(unsigned int size, unsigned char value) {
    auto image = std::make_shared<CQorImage>(size, size, PixelFormat::Bgra32Premultiplied, 0, false);
    std::memset(image->GetPixelData(), value, std::size_t{size} * size * 4);
    return image;
}

void CreateAndDestroy(benchmark::State& state) {
    const auto image = MakeSquare(1, 255);
    for (auto _ : state) benchmark::DoNotOptimize(MakeBlender(image));
}

/// The target stays opaque white.
void SmallBlend(benchmark::State& state, unsigned int size) {
    const auto source = MakeSquare(size, 128);
    const auto blender = MakeBlender(MakeSquare(size, 255));
    const std::shared_ptr<Coverage> coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange({0, 0, static_cast<int>(size), static_cast<int>(size)});
    std::shared_ptr<Coverage> blended;
    for (auto _ : state) {
        blender->Blend(source, coverage, {0, 0}, nullptr, nullptr, {0, 0}, 255, BlendMode::Normal, blended);
    }
}

/// The same by a painter.
void SmallDraw(benchmark::State& state, unsigned int size) {
    const std::shared_ptr<IQorImage> source = MakeSquare(size, 128);
    Painter painter(MakeSquare(size, 255));
    for (auto _ : state) painter.Draw(source, {0, 0});
}

/// A square through a soft mask of its size, by the blender or by a painter.
void SmallMasked(benchmark::State& state, unsigned int size, bool byPainter) {
    const std::shared_ptr<IQorImage> source = MakeSquare(size, 255), page = MakeSquare(size, 255);
    const auto blender = MakeBlender(page);
    Painter painter(page);
    Paint paint;
    paint.mask = std::make_shared<CQorImage>(size, size, PixelFormat::Index8, 0, false);
    paint.maskTransfer = std::make_shared<CIdentityPDFTransferFunction>(IPDFTransferFunction::SourceType::Luminosity);
    for (unsigned int i = 0; i < size * size; ++i) {
        paint.mask->GetPixelData()[i] = static_cast<unsigned char>(i * 255 / (size * size));
    }
    const std::shared_ptr<Coverage> coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange({0, 0, static_cast<int>(size), static_cast<int>(size)});
    std::shared_ptr<Coverage> blended;
    for (auto _ : state) {
        if (byPainter) {
            painter.Draw(source, {0, 0}, paint);
        } else {
            blender->Blend(source, coverage, {0, 0}, paint.mask, paint.maskTransfer, {0, 0}, 255, BlendMode::Normal,
                           blended);
        }
    }
}

void BeginAndEndGroup(benchmark::State& state) {
    const auto image = MakeSquare(kGroupSize, 255);
    const auto blender = MakeBlender(image);
    for (auto _ : state) {
        blender->BeginGroup(image, nullptr, false, false, false);
        blender->EndGroup();
    }
}

/// What a group cannot do without.
void CloneAndZero(benchmark::State& state) {
    const auto image = MakeSquare(kGroupSize, 255);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ImageUtil::Clone(*image, nullptr, nullptr));
        std::vector<unsigned int> groupAlpha(std::size_t{kGroupSize} * kGroupSize);
        benchmark::DoNotOptimize(groupAlpha.data());
    }
}

}  // namespace

void RegisterSetupBenchmarks() {
    benchmark::RegisterBenchmark("Setup/Create and destroy", CreateAndDestroy);
    for (const unsigned int size : {1U, 16U}) {
        const std::string side = std::to_string(size);
        const std::string name = "Setup/Blend " + side + "x" + side;
        benchmark::RegisterBenchmark(name.c_str(), [size](benchmark::State& state) { SmallBlend(state, size); });
    }
    for (const unsigned int size : {1U, 16U}) {
        const std::string side = std::to_string(size);
        const auto add = [&](const std::string& what, auto run) {
            const std::string name = "Setup/" + what + " " + side + "x" + side;
            benchmark::RegisterBenchmark(name.c_str(), run);
        };
        add("Draw", [size](benchmark::State& state) { SmallDraw(state, size); });
        add("Blend through mask", [size](benchmark::State& state) { SmallMasked(state, size, false); });
        add("Draw through mask", [size](benchmark::State& state) { SmallMasked(state, size, true); });
    }
    benchmark::RegisterBenchmark("Setup/BeginGroup and EndGroup 256x256", BeginAndEndGroup);
    benchmark::RegisterBenchmark("Setup/Clone and zeroed vector 256x256", CloneAndZero);
}

}  // namespace vantu::bench
