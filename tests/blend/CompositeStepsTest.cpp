#include "blend/definition/CompositeSteps.h"

#include <gtest/gtest.h>

#include <array>

#include "blend/definition/ModeTable.h"
#include "support/Picture.h"

namespace vantu::test {
namespace {

constexpr auto kPlain = MakeModeTable([]<BlendMode Mode>() { return &CompositePlain<Mode>; });
constexpr auto kJoined = MakeModeTable([]<BlendMode Mode>() { return &StepInGroup<Mode, false>; });
constexpr auto kKnockout = MakeModeTable([]<BlendMode Mode>() { return &StepInGroup<Mode, true>; });

Color ColorOf(unsigned int alpha, unsigned int red, unsigned int green, unsigned int blue) {
    return Color(alpha << 24 | red << 16 | green << 8 | blue);
}

Color RandomColor(Random& random) {
    return Color(static_cast<unsigned int>(random()));
}

TEST(CompositePlain, GivesTheWorkedFigures) {
    struct Case {
        BlendMode mode;
        Color cs;
        Color cd;
        unsigned int k;
        unsigned int as;
        Color written;
    };
    for (const Case& c : {
             Case{BlendMode::Normal, ColorOf(128, 200, 100, 50), ColorOf(255, 100, 100, 100), 255, 128,
                  ColorOf(255, 150, 100, 74)},
             Case{BlendMode::Multiply, ColorOf(128, 200, 100, 50), ColorOf(255, 100, 100, 100), 255, 128,
                  ColorOf(255, 88, 69, 59)},
             Case{BlendMode::Normal, ColorOf(255, 200, 100, 50), ColorOf(0, 9, 9, 9), 128, 128,
                  ColorOf(128, 200, 100, 50)},
             Case{BlendMode::Multiply, ColorOf(255, 200, 100, 50), ColorOf(128, 100, 150, 200), 200, 200,
                  ColorOf(228, 133, 87, 63)},
             Case{BlendMode::Overlay, ColorOf(200, 10, 128, 250), ColorOf(100, 127, 128, 129), 255, 200,
                  ColorOf(222, 20, 127, 237)},
         }) {
        const auto as = ConstantOpacity(c.k, c.cs.GetAlpha());
        EXPECT_EQ(as, c.as);
        Color cd = c.cd;
        EXPECT_EQ(kPlain[static_cast<std::size_t>(c.mode)](c.cs, cd, as), c.written.GetAlpha());
        EXPECT_EQ(Argb(cd), Argb(c.written));
    }
}

TEST(CompositePlain, TransparentBackdropGivesSourceAndEmptySourceTheBackdrop) {
    Random random(1);
    for (const auto composite : kPlain) {
        for (unsigned int as = 1; as < 256; ++as) {
            const Color cs = RandomColor(random), backdrop = RandomColor(random);
            Color cd(Argb(backdrop) & 0xFFFFFF);
            composite(cs, cd, as);
            EXPECT_EQ(Argb(cd), as << 24 | (Argb(cs) & 0xFFFFFF));
            cd = backdrop;
            EXPECT_EQ(composite(cs, cd, 0), backdrop.GetAlpha());
            EXPECT_EQ(Argb(cd), Argb(backdrop));
        }
    }
}

TEST(Opacity, OfASoftMaskIsCutEarlierInAGroup) {
    const auto plain = [](unsigned int k, unsigned int sa, double t) { return PlainMaskOpacity(k, sa, t); };
    const auto group = [](unsigned int k, unsigned int sa, double t) {
        return GroupMaskOpacity(k, sa, GroupMaskByte(t));
    };
    EXPECT_EQ(plain(255, 200, 0.5), 100U);
    EXPECT_EQ(group(255, 200, 0.5), 99U);
    EXPECT_EQ(plain(255, 254, 0.1), 25U);
    EXPECT_EQ(group(255, 254, 0.1), 24U);
    EXPECT_EQ(plain(200, 100, 0.5), 39U);
    EXPECT_EQ(group(200, 100, 0.5), 39U);
    EXPECT_EQ(plain(255, 255, -0.5), static_cast<unsigned int>(-127)) << "cut towards zero, then unsigned";
}

TEST(StepInGroup, FirstElementOverNothingIsTheSource) {
    for (std::size_t mode = 0; mode < kJoined.size(); ++mode) {
        for (const auto step : {kJoined[mode], kKnockout[mode]}) {
            std::uint32_t g = 0;
            Color cd(0);
            EXPECT_TRUE(step(ColorOf(255, 200, 100, 50), cd, Color(0), g, 128, false));
            EXPECT_EQ(g, 128U);
            EXPECT_EQ(Argb(cd), Argb(ColorOf(128, 200, 100, 50)));
        }
    }
    // An opaque snapshot keeps the pixel opaque and weighs the old colour by the rest.
    std::uint32_t g = 0;
    Color cd = ColorOf(255, 100, 100, 100);
    EXPECT_TRUE(kJoined[0](ColorOf(128, 200, 100, 50), cd, cd, g, 128, false));
    EXPECT_EQ(Argb(cd), Argb(ColorOf(255, 150, 100, 74)));
}

TEST(StepInGroup, StencilElementIgnoresTheConstantAlphaAndInAKnockoutGroupAllAlpha) {
    std::uint32_t g = 0;
    Color cd(0);
    EXPECT_TRUE(kJoined[0](ColorOf(200, 9, 9, 9), cd, Color(0), g, 100, true));
    EXPECT_EQ(g, 200U);
    EXPECT_EQ(cd.GetAlpha(), 200);
    cd = ColorOf(77, 1, 2, 3);
    EXPECT_TRUE(kKnockout[0](ColorOf(255, 200, 100, 50), cd, Color(0), g, 100, true));
    EXPECT_EQ(g, 200U);
    EXPECT_EQ(Argb(cd), Argb(ColorOf(77, 200, 100, 50)));
}

TEST(StepInGroup, TransparentSourceStillSetsTheAlpha) {
    std::uint32_t g = 100;
    Color cd = ColorOf(7, 10, 20, 30);
    const Color snapshot = ColorOf(50, 1, 2, 3);
    EXPECT_TRUE(kJoined[1](Color(0), cd, snapshot, g, 0, false));
    EXPECT_EQ(Argb(cd), Argb(ColorOf(131, 10, 20, 30))) << "50 - 50 * 100 / 255 + 100";
    EXPECT_EQ(g, 100U);
    EXPECT_TRUE(kKnockout[1](Color(0), cd, snapshot, g, 0, false));
    EXPECT_EQ(Argb(cd), Argb(ColorOf(50, 10, 20, 30)));
    EXPECT_EQ(g, 100U);

    g = 0;
    EXPECT_FALSE(kJoined[1](Color(0), cd, Color(0), g, 0, false)) << "nothing on nothing is not written";
    EXPECT_TRUE(kKnockout[1](Color(0), cd, Color(0), g, 0, false));
    EXPECT_EQ(Argb(cd), Argb(ColorOf(0, 10, 20, 30)));
}

TEST(StepInGroup, KnockoutColorIsIndependentOfEarlierSiblings) {
    Random random(4);
    for (const auto step : kKnockout) {
        for (int i = 0; i < 200; ++i) {
            const Color cs = RandomColor(random), snapshot = RandomColor(random);
            const std::uint32_t as = Between(random, 1, 255);
            std::uint32_t first = 0, second = 100;
            Color a = RandomColor(random), b = RandomColor(random);
            step(cs, a, snapshot, first, as, false);
            step(cs, b, snapshot, second, as, false);
            EXPECT_EQ(Argb(a), Argb(b));
            EXPECT_EQ(first, as);
            EXPECT_EQ(second, UniteAlpha(100, as));
        }
    }
}

}  // namespace
}  // namespace vantu::test
