#include "blend/definition/BlendFunctions.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

#include "blend/definition/ModeTable.h"

namespace vantu::test {
namespace {

using Integer = long long;

struct ModeCase {
    std::array<unsigned int, 4> worked;      ///< at the operand pairs of `kPairs`
    Integer (*exact)(Integer b, Integer s);  ///< floor(255 * B) of the real-valued function, in whole numbers
    int deviations = 0;                      ///< operand pairs where the mode gives one less than that
};

constexpr std::array<std::array<unsigned int, 2>, 4> kPairs{{{127, 128}, {64, 200}, {200, 64}, {1, 254}}};

Integer ExactScreen(Integer b, Integer s) {
    return (255 * (b + s) - b * s) / 255;
}

Integer ExactHardLight(Integer b, Integer s) {
    return 2 * s <= 255 ? 2 * s * b / 255 : ExactScreen(b, 2 * s - 255);
}

Integer ExactSoftLight(Integer b, Integer s) {
    const Integer w = 2 * s - 255;
    if (w < 0) return (65025 * b + w * b * (255 - b)) / 65025;
    if (4 * b < 255) {  // the polynomial 16b^3 - 12b^2 + 4b
        const Integer d = 16 * b * b * b - 3060 * b * b + 260100 * b;
        return (16581375 * b + w * (d - 65025 * b)) / 16581375;
    }
    // The greatest r with 255 * (r - b) + w * b <= w * sqrt(255 * b).
    const auto within = [=](Integer r) {
        const Integer x = 255 * (r - b) + w * b;
        return x <= 0 || x * x <= w * w * 255 * b;
    };
    Integer r = b;
    while (within(r + 1)) ++r;
    return r;
}

/// By the values of the modes.
const std::array<ModeCase, kBlendModeCount> kModes{{
    {{128, 200, 64, 254}, [](Integer, Integer s) { return s; }},
    {{63, 50, 50, 0}, [](Integer b, Integer s) { return b * s / 255; }},
    {{191, 213, 213, 254}, ExactScreen},
    {{127, 100, 172, 1}, [](Integer b, Integer s) { return ExactHardLight(s, b); }},
    {{127, 64, 64, 1}, [](Integer b, Integer s) { return b < s ? b : s; }},
    {{128, 200, 200, 254}, [](Integer b, Integer s) { return b > s ? b : s; }},
    {{255, 255, 255, 255}, [](Integer b, Integer s) { return b >= 255 - s ? 255 : 255 * b / (255 - s); }},
    {{0, 11, 35, 0}, [](Integer b, Integer s) { return s == 0 || 255 - b >= s ? 0 : 255 * (s - 255 + b) / s; }, 232},
    {{127, 172, 100, 253}, ExactHardLight},
    {{127, 100, 178, 3}, ExactSoftLight, 25},
    {{1, 136, 136, 253}, [](Integer b, Integer s) { return b > s ? b - s : s - b; }},
    {{127, 163, 163, 253}, [](Integer b, Integer s) { return (255 * (b + s) - 2 * b * s) / 255; }},
}};

constexpr auto kFunctions = MakeModeTable([]<BlendMode Mode>() { return &BlendChannel<Mode>; });

TEST(BlendFunctions, GiveTheWorkedFigures) {
    for (std::size_t mode = 0; mode < kModes.size(); ++mode) {
        for (std::size_t i = 0; i < kPairs.size(); ++i) {
            EXPECT_EQ(kFunctions[mode](kPairs[i][0], kPairs[i][1]), kModes[mode].worked[i])
                << kBlendModeNames[mode] << " of " << kPairs[i][0] << " and " << kPairs[i][1];
        }
    }
    EXPECT_EQ(ColorDodge(0, 255), 255U) << "a full source wins over an empty backdrop";
    EXPECT_EQ(ColorBurn(255, 0), 0U) << "an empty source wins over a full backdrop";
    // Where double precision gives one less than the real function.
    EXPECT_EQ(ColorBurn(1, 255), 0U);
    EXPECT_EQ(SoftLight(51, 15), 14U);
    EXPECT_EQ(SoftLight(85, 6), 30U);
}

TEST(BlendFunctions, AreTheRealFunctionsCutToIntegersButForTheKnownDeviations) {
    for (std::size_t mode = 0; mode < kModes.size(); ++mode) {
        int deviations = 0;
        for (unsigned int b = 0; b < 256; ++b) {
            for (unsigned int s = 0; s < 256; ++s) {
                const Integer less = kModes[mode].exact(b, s) - kFunctions[mode](b, s);
                ASSERT_TRUE(less == 0 || (less == 1 && kModes[mode].deviations != 0))
                    << kBlendModeNames[mode] << " of " << b << " and " << s;
                deviations += less != 0;
            }
        }
        EXPECT_EQ(deviations, kModes[mode].deviations) << kBlendModeNames[mode];
    }
}

}  // namespace
}  // namespace vantu::test
