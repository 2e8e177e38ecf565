#include "blend/definition/CompositeSteps.h"

#include <gtest/gtest.h>

#include <array>

#include "blend/definition/ModeTable.h"
#include "support/Picture.h"

namespace vantu::test {
namespace {

constexpr auto kPlain = MakeModeTable([]<BlendMode Mode>() { return &CompositePlain<Mode>; });

Color ColorOf(unsigned int alpha, unsigned int red, unsigned int green, unsigned int blue) {
    return Color(alpha << 24 | red << 16 | green << 8 | blue);
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
             Case{BlendMode::Exclusion, ColorOf(0, 200, 100, 50), ColorOf(77, 1, 2, 3), 255, 0, ColorOf(77, 1, 2, 3)},
         }) {
        const auto as = ConstantOpacity(c.k, c.cs.GetAlpha());
        EXPECT_EQ(as, c.as);
        Color cd = c.cd;
        EXPECT_EQ(kPlain[static_cast<std::size_t>(c.mode)](c.cs, cd, as), c.written.GetAlpha());
        EXPECT_EQ(Argb(cd), Argb(c.written));
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

TEST(StepInGroup, GivesTheWorkedFigures) {
    struct Case {
        const char* what;
        bool knockout;
        Color cs, cd, c0;  // source, pixel, snapshot
        std::uint32_t g, as;
        bool stencil;
        Color written;
        std::uint32_t groupAlpha;
        bool writes = true;
    };
    const Color source = ColorOf(128, 200, 100, 50), grey = ColorOf(255, 100, 100, 100), nothing(0);
    const Color held = ColorOf(7, 10, 20, 30), snapshot = ColorOf(50, 1, 2, 3);
    for (const Case& c : {
             Case{"first over nothing", false, source, nothing, nothing, 0, 128, false, source, 128},
             Case{"first over nothing", true, source, nothing, nothing, 0, 128, false, source, 128},
             Case{"opaque snapshot", false, source, grey, grey, 0, 128, false, ColorOf(255, 150, 100, 74), 128},
             Case{"after a sibling", true, source, held, grey, 100, 128, false, ColorOf(255, 150, 100, 74), 178},
             Case{"stencil raises by its own alpha", false, ColorOf(200, 9, 9, 9), nothing, nothing, 0, 100, true,
                  ColorOf(200, 4, 4, 4), 200},
             Case{"stencil", true, source, ColorOf(77, 1, 2, 3), nothing, 200, 100, true, ColorOf(77, 200, 100, 50),
                  200},
             Case{"clear source sets the alpha", false, nothing, held, snapshot, 100, 0, false,
                  ColorOf(131, 10, 20, 30), 100},
             Case{"clear source sets the alpha", true, nothing, held, snapshot, 100, 0, false, ColorOf(50, 10, 20, 30),
                  100},
             Case{"nothing on nothing", false, nothing, held, nothing, 0, 0, false, ColorOf(0, 10, 20, 30), 0, false},
             Case{"nothing on nothing", true, nothing, held, nothing, 0, 0, false, ColorOf(0, 10, 20, 30), 0},
         }) {
        SCOPED_TRACE(testing::Message() << c.what << (c.knockout ? ", knockout" : ""));
        const auto step = c.knockout ? &StepInGroup<BlendMode::Normal, true> : &StepInGroup<BlendMode::Normal, false>;
        Color cd = c.cd;
        std::uint32_t g = c.g;
        EXPECT_EQ(step(c.cs, cd, c.c0, g, c.as, c.stencil), c.writes);
        EXPECT_EQ(Argb(cd), Argb(c.written));
        EXPECT_EQ(g, c.groupAlpha);
    }
}

}  // namespace
}  // namespace vantu::test
