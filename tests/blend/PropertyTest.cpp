#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>

#include "blend/BlendSession.h"
#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

class Painting : public testing::TestWithParam<std::uint32_t> {};

TEST_P(Painting, IsThePixelByPixelResultOnEveryVectorTarget) {
    const std::vector<VectorTarget> targets = VectorTargets();
    for (std::uint32_t i = 0; i < 5000; ++i) {
        const std::uint32_t seed = GetParam() * 100000 + i;
        SCOPED_TRACE(seed);
        std::optional<ForcedTarget> forced;
        if (!targets.empty()) forced.emplace(targets[i % targets.size()]);
        ASSERT_NO_THROW(BlendSession(Choices(RandomBytes(seed, 400))).Run());
    }
}

/// Opaque pixels in long rows and in several to a span, but for one pixel of the source, and clear and translucent runs
/// in what is painted on.
TEST_P(Painting, OfOpaquePixelsThroughAMaskIsThePixelByPixelResult) {
    constexpr auto kColors = PixelFormat::Bgra32Premultiplied;
    Random random(GetParam());
    const auto identity = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Luminosity);
    const std::vector<VectorTarget> targets = VectorTargets();
    for (const auto& [width, height] : {std::pair{700U, 3U}, {512U, 2U}, {33U, 40U}, {7U, 160U}, {1U, 1100U}}) {
        std::optional<ForcedTarget> forced;
        if (!targets.empty()) forced.emplace(targets[GetParam() % targets.size()]);
        const auto source = std::make_shared<TestImage>(Shape{width, height, kColors}, random);
        const auto painted = std::make_shared<TestImage>(Shape{width, height, kColors}, random);
        for (unsigned int i = 3; i < painted->Size(); i += 4) {
            source->GetPixelData()[i] = painted->GetPixelData()[i] = 255;
        }
        source->GetPixelData()[4 * Between(random, width * height / 4, width * height - 1) + 3] = 9;
        for (unsigned int run = 0; run < 6; ++run) {
            const unsigned int start = Between(random, 0, width * height - 1);
            const unsigned int end = std::min(start + Between(random, 1, 200), width * height);
            for (unsigned int i = 4 * start; i < 4 * end; ++i) painted->GetPixelData()[i] &= run % 2 != 0 ? 0 : 254;
        }
        TestImage model(painted->GetShape());
        std::copy_n(painted->GetPixelData(), painted->Size(), model.GetPixelData());
        Call call{source, Cover({{0, 0, static_cast<int>(width), static_cast<int>(height)}})};
        const PixelFormat format =
            std::array{PixelFormat::Index1, PixelFormat::Bgr24, kColors, PixelFormat::Index8}.at(GetParam() % 4);
        const auto mask = std::make_shared<TestImage>(Shape{width, height, format}, random);
        if (format == PixelFormat::Index8) mask->SetPalette(GreyPalette(256));
        call.mask = mask;
        if (format != PixelFormat::Index1) call.transfer = identity;
        EXPECT_TRUE(Paint(*BlenderOn(painted), call));
        PaintModel(call, model);
        EXPECT_EQ(model.Bytes(), painted->Bytes()) << width << 'x' << height;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Painting, testing::Range(1U, 5U));

}  // namespace
}  // namespace vantu::test
