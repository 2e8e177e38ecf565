#include <benchmark/benchmark.h>
#include <vantu/CQorImage.h>
#include <vantu/ImageUtil.h>

#include <cstring>
#include <memory>

// Whole-image operations on 2048 x 2048 pixels, next to memcpy of as many bytes.

namespace vantu {
namespace {

constexpr unsigned int kSide = 2048;

/// Hands out one image again and again, so that no operation pays for fresh pages.
class ReusingFactory : public IGraphicsFactory {
public:
    std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                                           void**) override {
        if (!image_)
            image_ = std::make_shared<CQorImage>(width, height, format, static_cast<unsigned char>(4), bottomUp);
        return image_;
    }

private:
    std::shared_ptr<IQorImage> image_;
};

/// Runs `operation(image, factory)` and counts the picture's bytes once per run.
template <typename Operation>
void Run(benchmark::State& state, Operation operation) {
    const auto format = static_cast<PixelFormat>(state.range(0));
    CQorImage image(kSide, kSide, format, 4, false);
    image.SetPalette(nullptr);
    const std::size_t size = std::size_t{kSide} * kSide * BitsPerPixel(format) / 8;
    for (std::size_t i = 0; i < size; ++i) image.GetPixelData()[i] = static_cast<unsigned char>(i * 7);
    ReusingFactory factory;
    operation(image, factory);
    for (auto _ : state) {
        operation(image, factory);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
    state.SetLabel(std::to_string(BitsPerPixel(format)) + " bits");
}

void Memcpy(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        const auto target = factory.CreateImage(kSide, kSide, image.GetPixelFormat(), false, nullptr);
        std::memcpy(target->GetPixelData(), image.GetPixelData(),
                    std::size_t{kSide} * kSide * BitsPerPixel(image.GetPixelFormat()) / 8);
    });
}

void Fill(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory&) {
        benchmark::DoNotOptimize(ImageUtil::Clear(image, Color(0xFF123456), {1, 0, 0, 0}));
    });
}

void Clone(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        benchmark::DoNotOptimize(ImageUtil::Clone(image, &factory, nullptr));
    });
}

void Copy(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        const auto target = factory.CreateImage(kSide, kSide, image.GetPixelFormat(), false, nullptr);
        benchmark::DoNotOptimize(ImageUtil::Copy(image, {0, 0, kSide, kSide}, *target, {0, 0}));
    });
}

void FlipVertical(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        benchmark::DoNotOptimize(ImageUtil::Flip(image, false, true, &factory, nullptr));
    });
}

void FlipHorizontal(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        benchmark::DoNotOptimize(ImageUtil::Flip(image, true, false, &factory, nullptr));
    });
}

void HalfTurn(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        benchmark::DoNotOptimize(ImageUtil::Rotate(image, 2, &factory, nullptr));
    });
}

void QuarterTurn(benchmark::State& state) {
    Run(state, [](CQorImage& image, IGraphicsFactory& factory) {
        benchmark::DoNotOptimize(ImageUtil::Rotate(image, 1, &factory, nullptr));
    });
}

void Depths(benchmark::internal::Benchmark* bench) {
    bench->ArgName("format");
    for (const PixelFormat format :
         {PixelFormat::Index8, PixelFormat::Rgb565, PixelFormat::Bgr24, PixelFormat::Bgra32}) {
        bench->Arg(static_cast<std::int64_t>(format));
    }
}

void Packed(benchmark::internal::Benchmark* bench) {
    bench->ArgName("format")->Arg(1)->Arg(2);
}

BENCHMARK(Memcpy)->Name("Util/Memcpy")->Apply(Depths)->Apply(Packed);
BENCHMARK(Fill)->Name("Util/Fill")->Apply(Depths);
BENCHMARK(Clone)->Name("Util/Clone")->Apply(Depths);
BENCHMARK(Copy)->Name("Util/Copy")->Apply(Depths);
BENCHMARK(FlipVertical)->Name("Util/FlipVertical")->Apply(Depths);
BENCHMARK(FlipHorizontal)->Name("Util/FlipHorizontal")->Apply(Depths)->Apply(Packed);
BENCHMARK(HalfTurn)->Name("Util/HalfTurn")->Apply(Depths)->Apply(Packed);
BENCHMARK(QuarterTurn)->Name("Util/QuarterTurn")->Apply(Depths)->Apply(Packed);

}  // namespace
}  // namespace vantu
