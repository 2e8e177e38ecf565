#include "PlacesBench.h"

#include <benchmark/benchmark.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/ImageUtil.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

#include "BlendScene.h"
#include "PageScene.h"
#include "PixmanPeer.h"
#include "Timing.h"

namespace vantu::bench {
namespace {

constexpr unsigned int kPageSide = 384;
constexpr unsigned int kBatchPixels = 65536;  ///< pixels between two looks at the clock, at least
constexpr unsigned int kVariants = 8;         ///< masks or pictures in turn, so that no branch is learnt from them

constexpr auto kFormat = PixelFormat::Bgra32Premultiplied;

using Image = std::shared_ptr<CQorImage>;

Image MakeImage(unsigned int width, unsigned int height, PixelFormat format) {
    return std::make_shared<CQorImage>(width, height, format, static_cast<unsigned char>(0), false);
}

Image MakePicture(unsigned int size, Alphas alphas, unsigned int seed) {
    Image image = MakeImage(size, size, kFormat);
    const auto pixels = MakePixels(kFormat, alphas, std::size_t{size} * size, seed);
    std::copy(pixels->begin(), pixels->end(), image->GetPixelData());
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

/// Black through a mask's levels.
Image MakeBlack(const IQorImage& levels) {
    Image image = MakeImage(levels.GetWidth(), levels.GetHeight(), kFormat);
    for (std::size_t i = 0; i < std::size_t{levels.GetWidth()} * levels.GetHeight(); ++i) {
        image->GetPixelData()[4 * i + 3] = levels.GetPixelData()[i];
    }
    return image;
}

/// A page of random colours and calls all over it. @param call(variant) gives what they paint.
template <typename Call>
PageScene MakeScene(unsigned int size, Alphas alphas, Call call) {
    std::array<PageCall, kVariants> variants;
    for (unsigned int i = 0; i < kVariants; ++i) variants[i] = call(i);
    PageScene scene;
    scene.page = MakePicture(kPageSide, alphas, 100);
    scene.pristine.assign(scene.page->GetPixelData(),
                          scene.page->GetPixelData() + std::size_t{kPageSide} * kPageSide * 4);
    std::mt19937 random(11);
    const auto place = [&] { return static_cast<int>(random() % (kPageSide - size + 1)); };
    for (unsigned int i = 0; i < std::max(kVariants, kBatchPixels / (size * size)); ++i) {
        PageCall& placed = scene.calls.emplace_back(variants[i % kVariants]);
        const int x = place(), y = place(), side = static_cast<int>(size);
        placed.at = placed.paint.maskAt = {x, y};
        placed.rectangles = {{x, y, x + side, y + side}};
    }
    return scene;
}

/// Whether the library paints what the plain loop does.
bool IsExact(const PageScene& scene) {
    return Painted(scene, MakeBlendReplay(scene)) == Painted(scene, MakeScalarReplay(scene));
}

/// Whether pixman paints nearly what the plain loop does: by one call, as a difference grows where calls meet.
bool IsNearlyExact(const PageScene& scene) {
    const PageScene one{scene.page, scene.pristine, {scene.calls.front()}};
    return Alike(Painted(one, MakePixmanReplay(one)), Painted(one, MakeScalarReplay(one)));
}

/// Registers a scene painted by the library and by pixman, if it can. @param make() gives the scene.
template <typename Make>
void Register(const std::string& table, const std::string& name, Make make) {
    const auto add = [&](const std::string& painter, auto makeReplay, auto check) {
        const std::string full = table + '/' + painter + '/' + name;
        const auto run = [=](benchmark::State& state) {
            const PageScene scene = make();
            if (!IsRight(full, [&] { return check(scene); })) {
                state.SkipWithError("does not draw what the scalar loop draws");
                return;
            }
            const std::function<void()> paint = makeReplay(scene);
            Measure(
                state, [&] { scene.Restore(); }, paint, scene.calls.size(), scene.CountPixels());
        };
        benchmark::RegisterBenchmark(full.c_str(), run)->UseManualTime();
    };
    add("Library", MakeBlendReplay, IsExact);
    if (HasPixman()) add("Pixman", MakePixmanReplay, IsNearlyExact);
}

Image MakeOneColor(unsigned int size) {
    Image image = MakeImage(size, size, kFormat);
    ImageUtil::Clear(*image, Color(0xFF336699), {0, 0, static_cast<int>(size), static_cast<int>(size)});
    return image;
}

/// Opaque colours and pictures through masks. One colour or picture is enough: nothing in them is branched on.
void RegisterMasks() {
    const auto luminosity =
        std::make_shared<CIdentityPDFTransferFunction>(IPDFTransferFunction::SourceType::Luminosity);
    for (const std::string source : {"colour", "picture"}) {
        for (const std::string mask : {"8-bit glyph", "8-bit shadow", "1-bit glyph"}) {
            for (const unsigned int size : {16U, 64U, 256U}) {
                Register("Masks", source + '/' + mask + '/' + std::to_string(size), [=] {
                    PageCall call;
                    call.isColor = source == "colour";
                    call.picture = call.isColor ? MakeOneColor(size) : MakePicture(size, Alphas::Opaque, 1);
                    const unsigned int bits = mask[0] == '1' ? 1 : 8;
                    if (bits == 8) call.paint.maskTransfer = luminosity;
                    return MakeScene(size, Alphas::Opaque, [&](unsigned int variant) {
                        call.paint.mask =
                            mask == "8-bit shadow" ? MakeShadow(size, variant) : MakeGlyph(size, bits, variant);
                        return call;
                    });
                });
            }
        }
    }
}

/// What is painted on what.
struct Kind {
    char name;
    Alphas picture;
    Alphas page;
    unsigned char alpha;
    bool isShadow;
};

constexpr Kind kKinds[] = {
    {'a', Alphas::Opaque, Alphas::Opaque, 128, false}, {'b', Alphas::Random, Alphas::Opaque, 255, false},
    {'c', Alphas::Random, Alphas::Random, 255, false}, {'d', Alphas::Sprite, Alphas::Opaque, 255, false},
    {'e', Alphas::Sprite, Alphas::Half, 255, false},   {'f', Alphas::Random, Alphas::Opaque, 255, true},
    {'o', Alphas::Opaque, Alphas::Opaque, 255, false},
};

void RegisterPictures(BlendMode mode, const Kind& kind, unsigned int size) {
    const std::string name = std::string(kBlendModeNames[static_cast<std::size_t>(mode)]) + '/' + kind.name + '/';
    Register("Pictures", name + std::to_string(size), [=] {
        return MakeScene(size, kind.page, [&](unsigned int variant) {
            PageCall call;
            call.picture =
                kind.isShadow ? MakeBlack(*MakeShadow(size, variant)) : MakePicture(size, kind.picture, variant + 1);
            call.paint.mode = mode;
            call.paint.alpha = kind.alpha;
            return call;
        });
    });
}

/// Pictures in turn: all kinds with Normal, and in the other modes the kinds that pages are made of.
void RegisterPictures() {
    for (const Kind& kind : kKinds) {
        for (const unsigned int size : {16U, 64U, 256U}) RegisterPictures(BlendMode::Normal, kind, size);
        const bool isEverywhere = kind.name == 'd' || kind.name == 'f' || kind.name == 'o';
        for (unsigned int mode = 1; isEverywhere && mode < kBlendModeCount; ++mode) {
            RegisterPictures(static_cast<BlendMode>(mode), kind, 256);
        }
    }
}

}  // namespace

void RegisterPlacesBenchmarks() {
    RegisterMasks();
    RegisterPictures();
}

}  // namespace vantu::bench
