#include <gtest/gtest.h>

#include "blend/Scene.h"

// Random paintings by the blender against the model, byte for byte.

namespace vantu::test {
namespace {

class Painting : public testing::TestWithParam<std::uint32_t> {
protected:
    /// Calls `check(seed)` for many seeds, until one fails.
    template <typename Check>
    void ForSeeds(std::uint32_t count, Check check) {
        for (std::uint32_t i = 0; i < count && !HasFailure(); ++i) {
            const std::uint32_t seed = GetParam() * 100000 + i;
            SCOPED_TRACE(testing::Message() << "scene " << seed);
            check(seed);
        }
    }
};

void ExpectSame(const Scene& painted, const Scene& model, std::size_t call) {
    const Call& c = model.calls.at(call);
    EXPECT_TRUE(painted.Bytes() == model.Bytes())
        << model.destination->GetShape() << ", call " << call << " of source format "
        << static_cast<unsigned int>(c.source->GetPixelFormat()) << " mode " << static_cast<unsigned int>(c.mode)
        << " alpha " << int{c.alpha} << (c.mask ? " masked" : "");
    EXPECT_TRUE(painted.GuardsIntact());
}

void ExpectImagePainted(std::uint32_t seed, Scene::Memory memory) {
    const Scene painted(seed, memory), model(seed, memory);
    const auto blender = BlenderOn(painted.destination);
    for (std::size_t i = 0; i < model.calls.size(); ++i) {
        EXPECT_TRUE(Paint(*blender, painted.calls[i]));
        PaintModel(model.calls[i], *model.destination);
        ExpectSame(painted, model, i);
    }
}

/// Resolves a group pixel in place: p of the image, b of the snapshot, group alpha a.
void ResolvePixel(unsigned char* p, const unsigned char* b, std::uint32_t a, bool inverted, bool keep, bool plain) {
    const auto alpha = [=](unsigned int byte) { return inverted ? 255 - byte : byte; };
    const auto store = [](unsigned char& byte, std::uint32_t v) { byte = static_cast<unsigned char>(v); };
    const std::uint32_t pa = alpha(p[3]), ba = alpha(b[3]), a8 = a % 256;
    for (int c = 0; c < 3; ++c) {
        if (plain && keep) {
            store(p[c], ((255 - a8) * b[c] + a8 * p[c]) / 255);
        } else if (plain) {
            if (pa == 0) return;
            store(p[c], p[c] * a / pa);
        } else if (a == 0) {
            p[c] = 0;
        } else if (ba != 0) {
            if (pa == 0) return;
            const std::uint32_t n = p[c] * 255U / pa, o = b[c] * 255U / ba;
            const std::uint32_t t = (n - o) * (ba - a * ba / 255) / a;
            store(p[c], (n + t) * a / 255);
        }
    }
    store(p[3], plain && keep ? a8 : alpha(a));
}

void ExpectGroupPainted(std::uint32_t seed, Scene::Memory memory) {
    const Scene painted(seed, memory), model(seed, memory);
    const bool keep = model.keepBackdrop, plain = model.plainResolve;
    TestImage& image = *model.destination;
    const std::unique_ptr<TestImage> snapshot(new TestImage(image.GetShape()));
    std::copy_n(image.GetPixelData(), snapshot->Bytes().size(), snapshot->GetPixelData());
    const auto view = MakeConstDirectAccessor(*snapshot, image.GetPixelFormat());
    const std::size_t pixels = std::size_t{image.GetWidth()} * image.GetHeight();
    ModelGroup group{*view, model.knockout, image.GetWidth(), std::vector<std::uint32_t>(pixels)};
    const auto covered = IPDFImageBlender::CreateCoverage();

    const auto blender = BlenderOn(nullptr);
    ASSERT_TRUE(blender->BeginGroup(painted.destination, nullptr, model.knockout, keep, plain));
    for (std::size_t i = 0; i < model.calls.size(); ++i) {
        EXPECT_TRUE(Paint(*blender, painted.calls[i]));
        PaintModel(model.calls[i], image, &group);
        ExpectSame(painted, model, i);
        covered->AddCoverage(*model.calls[i].coverage);
    }
    ASSERT_TRUE(blender->EndGroup());
    const PixelFormat format = image.GetPixelFormat();
    const bool premultiplied = format == PixelFormat::Bgra32Premultiplied || format == PixelFormat::Bgra32Inverted;
    if (premultiplied && (plain || !keep)) {
        const auto rows = ViewOf<Accessor<PixelFormat::Bgra32>>(image);
        const auto before = ViewOf<Accessor<PixelFormat::Bgra32>>(*snapshot);
        for (const auto& [x0, y0, x1, y1] : covered->GetRanges()) {
            for (auto y = static_cast<unsigned int>(y0); y < static_cast<unsigned int>(y1); ++y) {
                for (auto x = static_cast<unsigned int>(x0); x < static_cast<unsigned int>(x1); ++x) {
                    ResolvePixel(rows.Address(x, y), before.Address(x, y), group.alpha[image.GetWidth() * y + x],
                                 format == PixelFormat::Bgra32Inverted, keep, plain);
                }
            }
        }
    }
    ExpectSame(painted, model, 0);
}

TEST_P(Painting, OnAnImageIsThePixelByPixelResult) {
    ForSeeds(700, [](std::uint32_t seed) { ExpectImagePainted(seed, Scene::Memory::Apart); });
}

TEST_P(Painting, OnAnImageWhoseMemoryIsAlsoReadIsThePixelByPixelResult) {
    ForSeeds(150, [](std::uint32_t seed) { ExpectImagePainted(seed, Scene::Memory::Overlapping); });
}

TEST_P(Painting, InAGroupIsThePixelByPixelResult) {
    ForSeeds(700, [](std::uint32_t seed) { ExpectGroupPainted(seed, Scene::Memory::Apart); });
}

TEST_P(Painting, InAGroupWhoseMemoryIsAlsoReadIsThePixelByPixelResult) {
    ForSeeds(150, [](std::uint32_t seed) { ExpectGroupPainted(seed, Scene::Memory::Overlapping); });
}

TEST_P(Painting, OnASurfaceTakesEveryFormatThroughItsPalette) {
    struct Target {
        void Get(unsigned int x, unsigned int y, Color& out) const { out = At(x, y); }
        void Set(unsigned int x, unsigned int y, const Color& in) const { At(x, y) = in; }
        Color& At(unsigned int x, unsigned int y) const { return surface.At(static_cast<int>(x), static_cast<int>(y)); }
        TestSurface& surface;
    };
    ForSeeds(250, [](std::uint32_t seed) {
        const Scene painted(seed, Scene::Memory::Apart, true), model(seed, Scene::Memory::Apart, true);
        const auto surface =
            std::make_shared<TestSurface>(model.destination->GetWidth(), model.destination->GetHeight());
        Random random(seed);
        for (Color& color : surface->pixels) color = Color(static_cast<unsigned int>(random()));
        TestSurface expected(*surface);
        const auto blender = BlenderOn(nullptr, surface);
        for (std::size_t i = 0; i < model.calls.size(); ++i) {
            EXPECT_TRUE(Paint(*blender, painted.calls[i]));
            const auto source = MakeConstAccessor(*model.calls[i].source);
            PaintModel(model.calls[i], *source, Target{expected}, false, nullptr);
            EXPECT_TRUE(std::ranges::equal(surface->pixels, expected.pixels, {}, Argb, Argb)) << "call " << i;
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Seeds, Painting, testing::Range(1U, 5U));

}  // namespace
}  // namespace vantu::test
