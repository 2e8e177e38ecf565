#include <gtest/gtest.h>
#include <vantu/CQorImage.h>
#include <vantu/Painter.h>

namespace vantu::test {
namespace {

constexpr int kGreys = 256;

/// A row of all greys.
std::shared_ptr<CQorImage> MakeGreys(unsigned char alpha) {
    const auto page = std::make_shared<CQorImage>(kGreys, 1U, PixelFormat::Bgra32Premultiplied, 4, false);
    for (unsigned int x = 0; x < kGreys; ++x) {
        unsigned char* const pixel = page->GetPixelData() + std::size_t{4} * x;
        pixel[0] = pixel[1] = pixel[2] = static_cast<unsigned char>(x * alpha / 255);
        pixel[3] = alpha;
    }
    return page;
}

/// Paints faint black twice with Multiply in a group of opacity k that is not isolated, over greys and a clear pixel.
/// @return the largest distance of a grey from C (1 - k + k (1 - a)^2), in 255ths, for all a up to a quarter.
double WorstOfFaintGroups(bool normal) {
    constexpr unsigned char kGroupAlpha = 153;
    double worst = 0;
    for (unsigned char alpha = 1; alpha < 64; ++alpha) {
        const auto page = MakeGreys(255);
        page->GetPixelData()[3] = 0;
        Painter painter(page);
        painter.BeginGroup({0, 0, kGreys, 1}, {.normal = normal});
        for (int i = 0; i < 2; ++i)
            painter.Fill({0, 0, kGreys, 1}, ARGB_BLACK, {.mode = BlendMode::Multiply, .alpha = alpha});
        painter.EndGroup({.alpha = kGroupAlpha});
        for (int x = 1; x < kGreys; ++x) {
            const double left = (1 - alpha / 255.0) * (1 - alpha / 255.0), k = kGroupAlpha / 255.0;
            worst = std::max(worst, std::abs(page->GetPixelData()[4 * x] - x * (1 - k + k * left)));
        }
    }
    return worst;
}

TEST(NormalGroup, KeepsFaintColoursOverOpaquePixels) {
    EXPECT_LT(WorstOfFaintGroups(true), 2);
    EXPECT_GT(WorstOfFaintGroups(false), 40);  // what the promise is for
}

TEST(NormalGroup, IsAnyOtherOverTranslucentPixels) {
    const auto paint = [](bool normal) {
        const auto page = MakeGreys(100);
        Painter painter(page);
        painter.BeginGroup({0, 0, kGreys, 1}, {.normal = normal});
        painter.Fill({0, 0, kGreys, 1}, Color(0xFF8040C0), {.mode = BlendMode::Screen, .alpha = 90});
        EXPECT_EQ(painter.EndGroup({.alpha = 128}), PaintResult::Painted);
        return std::vector<unsigned char>(page->GetPixelData(), page->GetPixelData() + std::size_t{4} * kGreys);
    };
    EXPECT_EQ(paint(true), paint(false));
}

TEST(NormalGroup, AddsNothingToAGroupAroundItWhereItPaintsNothing) {
    const auto page = MakeGreys(255);
    const std::vector<unsigned char> before(page->GetPixelData(), page->GetPixelData() + std::size_t{4} * kGreys);
    Painter painter(page);
    painter.BeginGroup({0, 0, kGreys, 1});
    painter.BeginGroup({0, 0, kGreys, 1}, {.normal = true});
    painter.Fill({0, 0, 1, 1}, Color(0xFFFFFFFF));
    EXPECT_EQ(painter.EndGroup({.alpha = 200}), PaintResult::Painted);
    EXPECT_EQ(painter.EndGroup({.mode = BlendMode::Multiply}), PaintResult::Painted);
    EXPECT_TRUE(std::equal(before.begin() + 4, before.end(), page->GetPixelData() + 4));
}

TEST(NormalGroup, SaysThatAnotherModeIsNotHeeded) {
    const auto page = MakeGreys(255);
    const auto before =
        std::vector<unsigned char>(page->GetPixelData(), page->GetPixelData() + std::size_t{4} * kGreys);
    Painter painter(page);
    painter.BeginGroup({0, 0, kGreys, 1}, {.normal = true});
    painter.Fill({0, 0, 1, 1}, Color(0xFFFFFFFF));
    EXPECT_EQ(painter.EndGroup({.mode = BlendMode::Difference}), PaintResult::PlainGroup);
    EXPECT_EQ(page->GetPixelData()[0], 255);
    EXPECT_TRUE(std::equal(before.begin() + 4, before.end(), page->GetPixelData() + 4));
}

}  // namespace
}  // namespace vantu::test
