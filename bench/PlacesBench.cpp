#include "PlacesBench.h"

#include <benchmark/benchmark.h>
#include <vantu/CIdentityPDFTransferFunction.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <string>

#include "PageScene.h"
#include "PixmanPeer.h"
#include "Timing.h"

namespace vantu::bench {
namespace {

constexpr unsigned int kPageSide = 384;
constexpr unsigned int kBatchPixels = 65536;  ///< pixels between two looks at the clock, at least
constexpr unsigned int kVariants = 8;         ///< masks or pictures in turn, so that no branch is learnt from them

using Image = std::shared_ptr<CQorImage>;
using Random = std::mt19937;

Image MakeImage(unsigned int width, unsigned int height, PixelFormat format) {
    return std::make_shared<CQorImage>(width, height, format, static_cast<unsigned char>(0), false);
}

/// A square of 32-bit pixels. @param pixel(i) gives each.
template <typename Pixel>
Image MakePicture(unsigned int size, Pixel pixel) {
    Image image = MakeImage(size, size, PixelFormat::Bgra32Premultiplied);
    for (std::size_t i = 0; i < std::size_t{size} * size; ++i) {
        const std::uint32_t argb = pixel(i);
        for (unsigned int k = 0; k < 4; ++k) {
            image->GetPixelData()[i * 4 + k] = static_cast<unsigned char>(argb >> (8 * k));
        }
    }
    return image;
}

/// A mask of a square. @param level(x, y) gives how much of the pixel at x, y from -1 to 1 is painted, 0 to 1.
template <typename Level>
Image MakeMask(unsigned int size, unsigned int bits, Level level) {
    Image mask = MakeImage(size, size, bits == 1 ? PixelFormat::Index1 : PixelFormat::Index8);
    const auto scaled = [size](std::size_t v) { return 2.0 * (static_cast<double>(v) + 0.5) / size - 1.0; };
    for (std::size_t i = 0; i < std::size_t{size} * size; ++i) {
        const double painted = std::clamp(level(scaled(i % size), scaled(i / size)), 0.0, 1.0);
        unsigned char& sample = mask->GetPixelData()[i * bits / 8];
        if (bits == 8) sample = static_cast<unsigned char>(std::lround(255.0 * painted));
        if (bits == 1 && painted < 0.5) sample = static_cast<unsigned char>(sample | 0x80U >> (i & 7));
    }
    return mask;
}

/// A disc with an anti-aliased edge; each variant of another radius.
Image MakeGlyph(unsigned int size, unsigned int bits, unsigned int variant) {
    return MakeMask(size, bits, [=](double x, double y) {
        const double radius = 0.75 + 0.25 * variant / kVariants;
        return (radius - std::hypot(x, y)) * size / 2 + 0.5;
    });
}

/// Smooth everywhere, (1 - x^2)(1 - y^2); each variant of another strength.
Image MakeShadow(unsigned int size, unsigned int variant) {
    return MakeMask(
        size, 8, [=](double x, double y) { return (1.0 - x * x) * (1.0 - y * y) * (1.0 - 0.5 * variant / kVariants); });
}

/// An opaque page of random colours and calls all over it. @param call(variant) gives what they paint.
template <typename Call>
PageScene MakeScene(unsigned int size, Call call) {
    std::array<PageCall, kVariants> variants;
    for (unsigned int i = 0; i < kVariants; ++i) variants[i] = call(i);
    Random random(11);
    PageScene scene;
    scene.page =
        MakePicture(kPageSide, [&](std::size_t) { return 0xFF000000U | static_cast<std::uint32_t>(random()); });
    scene.pristine.assign(scene.page->GetPixelData(),
                          scene.page->GetPixelData() + std::size_t{kPageSide} * kPageSide * 4);
    const auto place = [&] { return static_cast<int>(random() % (kPageSide - size + 1)); };
    for (unsigned int i = 0; i < std::max(kVariants, kBatchPixels / (size * size)); ++i) {
        PageCall& placed = scene.calls.emplace_back(variants[i % kVariants]);
        const int x = place(), y = place(), side = static_cast<int>(size);
        placed.at = placed.paint.maskAt = {x, y};
        placed.rectangles = {{x, y, x + side, y + side}};
    }
    return scene;
}

using Replay = std::function<void()> (*)(const PageScene&);
using Likeness = decltype(&Same);

std::vector<unsigned char> Painted(const PageScene& scene, const std::function<void()>& paint) {
    scene.Restore();
    paint();
    const unsigned char* const pixels = scene.page->GetPixelData();
    return {pixels, pixels + scene.pristine.size()};
}

void Run(benchmark::State& state, const PageScene& scene, Replay makeReplay, Likeness alike) {
    const std::function<void()> paint = makeReplay(scene);
    if (!alike(Painted(scene, paint), Painted(scene, MakeScalarReplay(scene)))) {
        state.SkipWithError("does not draw what the scalar loop draws");
        return;
    }
    Measure(
        state, [&] { scene.Restore(); }, paint, scene.calls.size(), scene.CountPixels());
}

/// Registers a scene painted by the library, by the plain loop and by pixman, if it can.
/// @param make() gives the scene.
template <typename Make>
void Register(const std::string& table, const std::string& name, Make make) {
    const auto add = [&](const char* painter, Replay replay, Likeness alike) {
        benchmark::RegisterBenchmark((table + '/' + painter + '/' + name).c_str(), [=](benchmark::State& state) {
            Run(state, make(), replay, alike);
        })->UseManualTime();
    };
    add("Library", MakeBlendReplay, Same);
    add("Scalar", MakeScalarReplay, Same);
    const PageScene scene = make();
    if (std::all_of(scene.calls.begin(), scene.calls.end(), [](const PageCall& c) { return HasPixmanPeer(c); })) {
        add("Pixman", MakePixmanReplay, [](const auto& a, const auto& b) { return Alike(a, b); });
    }
}

Image MakeSource(unsigned int size, bool isColor) {
    Random random(13);
    return MakePicture(
        size, [&](std::size_t) { return isColor ? 0xFF336699U : 0xFF000000U | static_cast<std::uint32_t>(random()); });
}

void RegisterMasks() {
    const auto luminosity =
        std::make_shared<CIdentityPDFTransferFunction>(IPDFTransferFunction::SourceType::Luminosity);
    for (const std::string source : {"colour", "picture"}) {
        for (const std::string mask : {"8-bit glyph", "8-bit shadow", "1-bit glyph"}) {
            for (const unsigned int size : {16U, 64U, 256U}) {
                Register("Masks", source + '/' + mask + '/' + std::to_string(size), [=] {
                    const Image picture = MakeSource(size, source == "colour");
                    return MakeScene(size, [&](unsigned int variant) {
                        PageCall call;
                        call.picture = picture;
                        call.isColor = source == "colour";
                        const bool isStencil = mask[0] == '1';
                        call.paint.mask = mask == "8-bit shadow" ? MakeShadow(size, variant)
                                                                 : MakeGlyph(size, isStencil ? 1 : 8, variant);
                        if (!isStencil) call.paint.maskTransfer = luminosity;
                        return call;
                    });
                });
            }
        }
    }
}

}  // namespace

void RegisterPlacesBenchmarks() {
    RegisterMasks();
}

}  // namespace vantu::bench
