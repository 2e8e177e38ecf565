#include <gtest/gtest.h>

#include "blend/GroupModel.h"
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

void ExpectGroupPainted(std::uint32_t seed, Scene::Memory memory) {
    const Scene painted(seed, memory), model(seed, memory);
    const auto blender = BlenderOn(nullptr);
    GroupModel group(*model.destination, model.knockout, model.keepBackdrop, model.plainResolve);
    ASSERT_TRUE(
        blender->BeginGroup(painted.destination, nullptr, model.knockout, model.keepBackdrop, model.plainResolve));
    for (std::size_t i = 0; i < model.calls.size(); ++i) {
        EXPECT_TRUE(Paint(*blender, painted.calls[i]));
        group.Paint(model.calls[i]);
        ExpectSame(painted, model, i);
    }
    ASSERT_TRUE(blender->EndGroup());
    group.End();
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
            PaintModel(model.calls[i], expected);
            EXPECT_TRUE(std::ranges::equal(surface->pixels, expected.pixels, {}, Argb, Argb)) << "call " << i;
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Seeds, Painting, testing::Range(1U, 5U));

}  // namespace
}  // namespace vantu::test
