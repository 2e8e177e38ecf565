#include <gtest/gtest.h>

#include "blend/Painting.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;
using Bytes = std::vector<unsigned char>;

const auto kPixel = [] { return Cover({{0, 0, 1, 1}}); };

/// What `EndGroup` makes of a pixel that held `before` when the group was opened, holds `now` and has a group alpha.
Bytes Resolved(PixelFormat format, bool keepBackdrop, bool plainResolve, const Bytes& before, const Bytes& now,
               unsigned char groupAlpha) {
    const auto image = Row(format, before);
    const auto blender = BlenderOn(nullptr);
    EXPECT_TRUE(blender->BeginGroup(image, nullptr, false, keepBackdrop, plainResolve));
    EXPECT_TRUE(Paint(*blender, {Row(Bgra32Premultiplied, {0, 0, 0, groupAlpha}), kPixel()}));
    std::ranges::copy(now, image->GetPixelData());
    EXPECT_TRUE(blender->EndGroup());
    EXPECT_FALSE(blender->EndGroup());
    return image->Bytes();
}

TEST(EndGroup, ResolvesByTheFlags) {
    struct Case {
        const char* what;
        PixelFormat format;
        bool keepBackdrop;
        bool plainResolve;
        Bytes before;
        Bytes now;
        unsigned char groupAlpha;
        Bytes after;
    };
    constexpr auto p7 = Bgra32Premultiplied, p8 = Bgra32Inverted;
    const Bytes before7{50, 100, 150, 200}, now7{200, 120, 60, 228};
    const Bytes before8{50, 100, 150, 55}, now8{200, 120, 60, 27};
    for (const Case& c : {
             // Red is darker than the snapshot's: the difference wraps.
             Case{"remove", p7, false, false, before7, now7, 128, {174, 69, 241, 128}},
             Case{"remove", p8, false, false, before8, now8, 128, {174, 69, 241, 127}},
             Case{"remove, nothing painted", p7, false, false, before7, now7, 0, {0, 0, 0, 0}},
             Case{"remove, nothing painted", p8, false, false, before8, now8, 0, {0, 0, 0, 255}},
             Case{"remove nothing", p7, false, false, {9, 9, 9, 0}, now7, 128, {200, 120, 60, 128}},
             Case{"remove nothing", p8, false, false, {9, 9, 9, 255}, now8, 128, {200, 120, 60, 127}},
             Case{"remove from a clear pixel", p7, false, false, before7, {1, 2, 3, 0}, 128, {1, 2, 3, 0}},
             Case{"remove from a clear pixel", p8, false, false, before8, {1, 2, 3, 255}, 128, {1, 2, 3, 255}},
             Case{"rescale", p7, false, true, before7, {100, 50, 25, 200}, 128, {64, 32, 16, 128}},
             Case{"rescale", p8, false, true, before8, {100, 50, 25, 55}, 128, {64, 32, 16, 127}},
             Case{"rescale to nothing", p7, false, true, before7, {100, 50, 25, 200}, 0, {0, 0, 0, 0}},
             Case{"rescale a clear pixel", p7, false, true, before7, {1, 2, 3, 0}, 128, {1, 2, 3, 0}},
             Case{"rescale a clear pixel", p8, false, true, before8, {1, 2, 3, 255}, 128, {1, 2, 3, 255}},
             Case{"mix", p7, true, true, before7, now7, 128, {125, 110, 104, 128}},
             Case{"mix", p8, true, true, before8, now8, 128, {125, 110, 104, 128}},
             Case{"keep", p7, true, false, before7, now7, 128, now7},
             Case{"keep", p8, true, false, before8, now8, 128, now8},
         }) {
        EXPECT_EQ(Resolved(c.format, c.keepBackdrop, c.plainResolve, c.before, c.now, c.groupAlpha), c.after)
            << c.what << " in format " << static_cast<unsigned int>(c.format);
    }
    for (const bool keepBackdrop : {false, true}) {
        for (const bool plainResolve : {false, true}) {
            EXPECT_EQ(Resolved(Bgra32, keepBackdrop, plainResolve, before7, now7, 128), now7);
            EXPECT_EQ(Resolved(Bgr24, keepBackdrop, plainResolve, {1, 2, 3}, {4, 5, 6}, 128), (Bytes{4, 5, 6}));
        }
    }
}

TEST(EndGroup, LeavesTheImageOfAGroupThatPaintedNothing) {
    const Bytes bytes{50, 100, 150, 200};
    const auto image = Row(Bgra32Premultiplied, bytes);
    const auto source = Row(Bgr24, {1, 2, 3});
    const auto blender = BlenderOn(nullptr);
    for (const Call& call : {Call{source, kPixel(), {0, 0}, nullptr, nullptr, {0, 0}, 255, BlendMode{kBlendModeCount}},
                             Call{nullptr, kPixel()}, Call{source, nullptr}, Call{Row(Bgra32, bytes), kPixel()}}) {
        blender->BeginGroup(image, nullptr, false, false, false);
        EXPECT_FALSE(Paint(*blender, call));
        EXPECT_TRUE(blender->EndGroup());
        EXPECT_EQ(image->Bytes(), bytes);
    }
    for (const Call& call : {Call{source, Cover({})}, Call{.source = source, .coverage = kPixel(), .alpha = 0}}) {
        blender->BeginGroup(image, nullptr, false, false, false);
        EXPECT_TRUE(Paint(*blender, call));
        EXPECT_TRUE(blender->EndGroup());
        EXPECT_EQ(image->Bytes(), bytes);
    }
    blender->BeginGroup(image, nullptr, false, false, false);
    EXPECT_TRUE(Paint(*blender, {source, kPixel()}));
    EXPECT_TRUE(blender->EndGroup());
    EXPECT_EQ(image->Bytes()[3], 255) << "the blender is of use after all that";
}

TEST(BeginGroup, WithoutPixelsOpensNoGroup) {
    const auto hollow = Row(Bgra32, {1, 2, 3, 4});
    hollow->HideMemory();
    const auto blender = BlenderOn(nullptr);
    for (const auto& image : {std::shared_ptr<TestImage>(), hollow, std::make_shared<TestImage>(Shape{0, 4, Bgra32}),
                              std::make_shared<TestImage>(Shape{4, 0, Bgra32, 4, true})}) {
        EXPECT_TRUE(blender->BeginGroup(image, nullptr, false, false, false));
        EXPECT_FALSE(blender->EndGroup());
    }
}

TEST(Groups, NestAndPaintOnTheTopImageAlone) {
    constexpr unsigned char depth = 64;
    const auto surface = std::make_shared<TestSurface>(1, 1, 0xFF646464);
    const auto blender = BlenderOn(nullptr, surface);
    std::vector<std::shared_ptr<TestImage>> images;
    std::weak_ptr<void> held;
    for (unsigned char i = 0; i < depth; ++i) {
        images.push_back(Row(Bgra32Premultiplied, {0, 0, 0, 0}));
        auto object = std::make_shared<int>(i);
        if (i == 0) held = object;
        EXPECT_TRUE(blender->BeginGroup(images.back(), object, i % 2 != 0, false, false));
    }
    for (unsigned char i = depth; i > 0; --i) {
        EXPECT_FALSE(held.expired());
        EXPECT_TRUE(Paint(*blender, {Row(Bgr24, {i, i, i}), kPixel()}));
        EXPECT_TRUE(blender->EndGroup());
        EXPECT_EQ(images[i - 1U]->Bytes(), (Bytes{i, i, i, 255}));
        EXPECT_TRUE(i == 1 || images[i - 2U]->Bytes() == (Bytes{0, 0, 0, 0}));
    }
    EXPECT_TRUE(held.expired());
    EXPECT_FALSE(blender->EndGroup());
    EXPECT_TRUE(surface->log.empty());
    EXPECT_TRUE(Paint(*blender, {images[0], kPixel()}));
    EXPECT_EQ(Argb(surface->At(0, 0)), 0xFF010101U);
}

TEST(Groups, AreTheSameAfterGroupsOfAnyShape) {
    Random random(5);
    const auto longLived = BlenderOn(nullptr);
    for (int i = 0; i < 300; ++i) {
        const Shape shape{random() % 2 != 0 ? 1U : 2U, 2, random() % 2 != 0 ? Bgra32Premultiplied : Bgra32Inverted,
                          static_cast<unsigned char>(random() % 2 * 16), random() % 2 != 0};
        const auto image = std::make_shared<TestImage>(shape, random);
        const auto again = std::make_shared<TestImage>(shape);
        std::copy_n(image->GetPixelData(), image->Size(), again->GetPixelData());
        const int row = static_cast<int>(random() % 2);
        const Call element{.source = std::make_shared<TestImage>(shape, random),
                           .coverage = Cover({{0, row, static_cast<int>(shape.width), row + 1}}),
                           .alpha = static_cast<unsigned char>(1 + random() % 255)};
        const auto paint = [&](IPDFImageBlender& blender, const std::shared_ptr<TestImage>& group) {
            blender.BeginGroup(group, nullptr, false, false, false);
            EXPECT_TRUE(Paint(blender, element));
            EXPECT_TRUE(blender.EndGroup());
        };
        paint(*longLived, image);
        paint(*BlenderOn(nullptr), again);
        ASSERT_EQ(image->Bytes(), again->Bytes()) << i;
    }
}

TEST(Groups, TakeNoSourceThatOnlyASurfaceTakes) {
    const auto blender = BlenderOn(nullptr, std::make_shared<TestSurface>(1, 1));
    EXPECT_TRUE(Paint(*blender, {Row(Index8, {1}), kPixel()}));
    blender->BeginGroup(Row(Bgra32, {1, 2, 3, 4}), nullptr, false, false, false);
    EXPECT_FALSE(Paint(*blender, {Row(Index8, {1}), kPixel()}));
}

TEST(Groups, OffsetOfAMaskedElementMovesThePaintButNotTheCoverage) {
    const auto image = Row(Bgra32Premultiplied, {9, 9, 9, 9, 0, 0, 0, 0});
    const auto blender = BlenderOn(nullptr);
    blender->BeginGroup(image, nullptr, false, false, false);
    EXPECT_TRUE(Paint(*blender, {Row(Bgr24, {1, 2, 3}), kPixel(), {1, 0}, Row(Index1, {0})}));
    EXPECT_TRUE(blender->EndGroup());
    EXPECT_EQ(image->Bytes(), (Bytes{0, 0, 0, 0, 1, 2, 3, 255}));
}

TEST(Groups, ResolveOnlyWhatOfARangeLiesInTheImage) {
    const auto source = std::make_shared<TestImage>(Shape{200, 200, Bgr24});
    const auto stencil = std::make_shared<TestImage>(Shape{2, 1, Index1});
    const auto blender = BlenderOn(nullptr);
    for (const Point<int, 2>& at : {Point<int, 2>{2, 1}, {2, 100}, {3, 0}, {0, 2}, {100, 0}}) {
        const auto image = std::make_shared<TestImage>(Shape{3, 2, Bgra32Premultiplied});
        blender->BeginGroup(image, nullptr, false, false, false);
        EXPECT_TRUE(Paint(*blender, {.source = source,
                                     .coverage = Cover({{at.x, at.y, at.x + 2, at.y + 1}}),
                                     .offset = {-at.x, -at.y},
                                     .mask = stencil,
                                     .maskOffset = at}));
        Bytes resolved = image->Bytes();
        if (at.x == 2 && at.y == 1) std::fill_n(resolved.end() - 4, 4, static_cast<unsigned char>(0));
        EXPECT_TRUE(blender->EndGroup());
        EXPECT_EQ(image->Bytes(), resolved) << at.x << ' ' << at.y;
        EXPECT_TRUE(image->GuardsIntact()) << at.x << ' ' << at.y;
    }
    // Ranges without pixels may reach anywhere, and grow into a box where they touch.
    const auto image = std::make_shared<TestImage>(Shape{3, 2, Bgra32Premultiplied});
    blender->BeginGroup(image, nullptr, false, false, false);
    EXPECT_TRUE(Paint(*blender, {source, Cover({{-2, 0, 5, 0}})}));
    EXPECT_TRUE(Paint(*blender, {source, Cover({{0, -3, 0, 7}})}));
    EXPECT_TRUE(blender->EndGroup());
    EXPECT_EQ(image->Bytes(), Bytes(image->Size(), 0));
    EXPECT_TRUE(image->GuardsIntact());
}

TEST(Groups, IsolatedOnePaintedInFullOverNothingGivesItsOwnImage) {
    Random random(1);
    for (const PixelFormat format : {Bgra32Premultiplied, Bgra32Inverted}) {
        const Shape shape{37, 11, format, 3, true};
        const auto group = std::make_shared<TestImage>(shape), page = std::make_shared<TestImage>(shape);
        for (const auto& image : {group, page}) {
            for (unsigned int i = 0; i < 37 * 11; ++i) {
                SetValueAt(*image, i % 37, i / 37, format == Bgra32Inverted ? 0xFF000000 : 0);
            }
        }
        const auto blender = BlenderOn(page);
        blender->BeginGroup(group, nullptr, false, false, false);
        for (int i = 0; i < 20; ++i) {
            const int x = static_cast<int>(Between(random, 0, 36)), y = static_cast<int>(Between(random, 0, 10));
            EXPECT_TRUE(Paint(*blender, {.source = std::make_shared<TestImage>(
                                             Shape{37, 11, PixelFormat{Between(random, 5, 8)}}, random),
                                         .coverage = Cover({{x, y, 37, 11}}),
                                         .alpha = static_cast<unsigned char>(Between(random, 1, 255)),
                                         .mode = BlendMode{Between(random, 0, kBlendModeCount - 1)}}));
        }
        EXPECT_TRUE(blender->EndGroup());
        EXPECT_TRUE(Paint(*blender, {group, Cover({{0, 0, 37, 11}})}));
        // Each byte as one reading and writing of its colour leaves it.
        const auto colors = MakeAccessor(*group);
        for (unsigned int i = 0; i < 37 * 11; ++i) {
            Color color;
            colors->GetColor(*colors, i % 37, i / 37, color);
            colors->SetColor(*colors, i % 37, i / 37, color);
        }
        EXPECT_TRUE(SamePicture(*page, *group));
    }
}

}  // namespace
}  // namespace vantu::test
