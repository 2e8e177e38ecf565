#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "painter/PainterSession.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

std::shared_ptr<IPDFTransferFunction> Identity(TransferSource source) {
    return std::make_shared<CIdentityPDFTransferFunction>(source);
}

TEST(Painter, GivesTheBytesOfCallsMadeByHand) {
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_NO_THROW(PainterSession(Choices(RandomBytes(seed, 500))).Run());
    }
}

TEST(Painter, SaysWhyNothingIsPainted) {
    Random random(1);
    const auto page = std::make_shared<TestImage>(Shape{4, 4, Bgr24}, random);
    const auto before = page->Bytes();
    Painter painter(page);
    const auto opaque = std::make_shared<TestImage>(Shape{2, 2, Bgr24}, random);
    const auto hidden = std::make_shared<TestImage>(Shape{2, 2, Bgr24}, random);
    hidden->HideMemory();
    struct WideImage : TestImage {
        using TestImage::TestImage;
        unsigned int GetWidth() const override { return 1U << 28; }
    };
    const auto wide = std::make_shared<WideImage>(Shape{2, 2, Bgr24});
    const auto draw = [&](const Image& picture, const How& how) { return painter.Draw(picture, {0, 0}, how); };
    const auto expect = [](PaintResult result, PaintResult expected) { EXPECT_EQ(result, expected) << TextOf(result); };
    expect(draw(nullptr, {}), PaintResult::NoPixels);
    expect(draw(hidden, {}), PaintResult::NoPixels);
    expect(draw(wide, {}), PaintResult::TooWide);
    expect(draw(std::make_shared<TestImage>(Shape{2, 2, Bgra32}), {}), PaintResult::SourceFormat);
    expect(draw(opaque, {.mode = BlendMode{kBlendModeCount}}), PaintResult::NoSuchMode);
    expect(draw(opaque, {.mode = static_cast<BlendMode>(1 << 16)}), PaintResult::NoSuchMode);
    expect(draw(opaque, {.mask = opaque}), PaintResult::MaskWithoutFunction);
    const auto alphaOf = Identity(TransferSource::Alpha);
    expect(draw(opaque, {.mask = hidden, .maskTransfer = alphaOf}), PaintResult::NoPixels);
    expect(draw(opaque, {.mask = wide, .maskTransfer = alphaOf}), PaintResult::TooWide);
    const auto formless = std::make_shared<TestImage>(Shape{2, 2, static_cast<PixelFormat>(0)});
    expect(draw(opaque, {.mask = formless, .maskTransfer = alphaOf}), PaintResult::MaskFormat);
    expect(draw(opaque, {.alpha = 0}), PaintResult::NothingToPaint);
    expect(painter.BeginGroup({4, 0, 9, 9}), PaintResult::NothingToPaint);
    expect(draw(opaque, {}), PaintResult::NothingToPaint);
    expect(painter.EndGroup(), PaintResult::NothingToPaint);
    expect(painter.EndGroup(), PaintResult::NoGroup);
    EXPECT_EQ(page->Bytes(), before);

    expect(Painter(std::make_shared<TestImage>(Shape{4, 4, Index8})).Draw(opaque, {0, 0}), PaintResult::TargetFormat);
    expect(Painter(nullptr).Fill({0, 0, 1, 1}, ARGB_BLACK), PaintResult::NoPixels);
    expect(painter.BeginGroup({0, 0, 4, 4}, {.plain = true}), PaintResult::GroupBegun);
    page->HideMemory();
    expect(draw(opaque, {}), PaintResult::NoPixels);
    expect(painter.EndGroup({.alpha = 7}), PaintResult::PlainGroup);
}

TEST(Painter, StartsOnAClearGroupAfterACallThatThrew) {
    const auto page = std::make_shared<TestImage>(Shape{4, 1, Bgra32Premultiplied});
    Painter painter(page);
    const Image mask = Row(Index8, {255, 255, 255, 7});
    mask->SetPalette(GreyPalette(256));
    const auto throws = std::make_shared<HostFunction>([](const Color& c) -> double {
        if (c.GetGreen() == 7) throw std::runtime_error("no opacity");
        return 1;
    });
    const Rectangle whole{0, 0, 4, 1};
    const unsigned char before = page->GetPixelData()[4 + 3];
    painter.BeginGroup(whole, {.isolated = true});
    const std::vector<Rectangle> broken{{1, 0, 2, 1}, {3, 0, 4, 1}}, around{{0, 0, 1, 1}, {2, 0, 3, 1}};
    EXPECT_THROW(painter.Fill(broken, 0xFF0000FF, {.mask = mask, .maskTransfer = throws}), std::runtime_error);
    painter.EndGroup();
    painter.BeginGroup(whole, {.isolated = true});
    painter.Fill(around, 0xFF00FF00);
    painter.EndGroup();
    EXPECT_EQ(page->GetPixelData()[4 + 3], before);
}

TEST(Painter, HasATextOfItsOwnForEachResult) {
    std::set<std::string> texts{TextOf(static_cast<PaintResult>(-1))};
    for (int i = 0; i <= static_cast<int>(PaintResult::NoGroup); ++i) {
        EXPECT_TRUE(texts.insert(TextOf(static_cast<PaintResult>(i))).second) << i;
    }
    EXPECT_FALSE(texts.contains(""));
}

TEST(Painter, ReachesTheEndsOfPositionsAndNoFurther) {
    struct Corner : RasterSurface {
        Corner() {
            GetPixel = [](RasterSurface*, int x, int y, Color& out) {
                EXPECT_TRUE(x >= kMost - 4 && x < kMost && y >= kLeast && y < kLeast + 4) << x << ' ' << y;
                out = Color(0xFFFFFFFF);
            };
            SetPixel = [](RasterSurface* self, int, int, const Color&) { ++static_cast<Corner*>(self)->painted; };
        }
        int painted = 0;
    };
    const auto corner = std::make_shared<Corner>();
    Painter painter(corner, {kMost - 4, kLeast, kMost, kLeast + 4});
    const auto painted = [&](PaintResult result) { return std::pair(result, std::exchange(corner->painted, 0)); };
    const auto pixels = [](int count) { return std::pair(PaintResult::Painted, count); };
    const Rectangle everything{kLeast, kLeast, kMost, kMost};
    EXPECT_EQ(painted(painter.Fill(everything, ARGB_BLACK)), pixels(16));

    Random random(2);
    const auto picture = std::make_shared<TestImage>(Shape{9, 9, Bgr24}, random);
    EXPECT_EQ(painted(painter.Draw(picture, {kMost - 1, kLeast})), pixels(4));
    EXPECT_EQ(painted(painter.Draw(picture, {kMost - 9, kLeast + 3})), pixels(4));
    EXPECT_EQ(painter.Draw(picture, {kLeast, kMost}), PaintResult::NothingToPaint);
    const How masked{.mask = picture, .maskAt = {kMost - 2, kLeast}, .maskTransfer = Identity(TransferSource::Alpha)};
    EXPECT_EQ(painted(painter.Fill(everything, ARGB_BLACK, masked)), pixels(8));
    EXPECT_EQ(painted(painter.Draw(picture, {kMost - 8, kLeast}, masked)), pixels(8));

    EXPECT_EQ(painter.BeginGroup(everything), PaintResult::GroupBegun);
    EXPECT_EQ(painted(painter.Fill(everything, ARGB_BLACK, masked)), pixels(0));
    EXPECT_EQ(painted(painter.EndGroup()), pixels(8));
}

}  // namespace
}  // namespace vantu::test
