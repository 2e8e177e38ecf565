#include <gtest/gtest.h>
#include <vantu/ImageUtil.h>

#include "support/Picture.h"
#include "support/TestImage.h"
#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

/// The raw field of `bits` bits at `position` of a memory row, read from the block as it lies; 0 past its end.
unsigned int FieldOfBlock(const TestImage& image, unsigned int y, unsigned int position) {
    const unsigned int bits = BitsPerPixel(image.GetPixelFormat());
    const unsigned int row = image.IsBottomUp() ? image.GetHeight() - 1 - y : y;
    const std::size_t byte = std::size_t{row} * image.Stride() + position * bits / 8;
    if (byte >= image.Bytes().size()) return 0;
    return image.Bytes()[byte] >> (8 - position * bits % 8 - bits) & ((1U << bits) - 1);
}

/// What a horizontal or vertical flip puts at (x, y).
unsigned int FlippedValue(const TestImage& image, bool horizontal, unsigned int x, unsigned int y) {
    if (!horizontal) return ValueAt(image, x, image.GetHeight() - 1 - y);
    if (BitsPerPixel(image.GetPixelFormat()) < 8) return FieldOfBlock(image, y, image.GetWidth() - x);
    return ValueAt(image, image.GetWidth() - 1 - x, y);
}

/// What `turns` quarter turns counter-clockwise put at (x, y) of the turned picture.
unsigned int TurnedValue(const TestImage& image, int turns, unsigned int x, unsigned int y) {
    const unsigned int lastX = image.GetWidth() - 1, lastY = image.GetHeight() - 1;
    if (turns == 1) return ValueAt(image, lastX - y, x);
    if (turns == 2) return ValueAt(image, lastX - x, lastY - y);
    return ValueAt(image, y, lastY - x);
}

template <typename Value>
void Paint(TestImage& image, Value value) {
    for (unsigned int y = 0; y < image.GetHeight(); ++y) {
        for (unsigned int x = 0; x < image.GetWidth(); ++x) SetValueAt(image, x, y, value(x, y));
    }
}

/// Compares the last image of a factory, byte by byte, with a picture laid out in rows of `alignment`: what fits of it.
template <typename Value>
void ExpectPainted(const TestFactory& factory, unsigned char alignment, Value value) {
    Shape layout = factory.last->GetShape();
    layout.alignment = alignment;
    TestImage picture(layout);
    Paint(picture, value);
    auto expected = picture.Bytes();
    expected.resize(factory.last->Bytes().size(), TestImage::kFreshByte);
    ASSERT_EQ(factory.last->Bytes(), expected);
    ASSERT_TRUE(factory.last->GuardsIntact());
}

/// A shape up to 70 pixels wide and high; each fifth one longer, so that it takes several vectors and tiles.
Shape TurnedShape(Random& random, PixelFormat format, int number) {
    Shape shape = RandomShape(random, format, 70);
    if (number % 5 != 0) return shape;
    shape.width = Between(random, 1, 1200 / std::min(BitsPerPixel(format), 8U));
    shape.height = Between(random, 1, 150);
    if (number % 2 == 0) std::swap(shape.width, shape.height);
    return shape;
}

/// Calls `check(format, random)` for every format on every instruction set.
template <typename Check>
void ForFormatsAndTargets(Check check) {
    Random random(1);
    const auto run = [&] {
        for (const PixelFormat format : kPixelFormats) ASSERT_NO_FATAL_FAILURE(check(format, random));
    };
    const auto targets = VectorTargets();
    if (targets.empty()) run();
    for (const VectorTarget& target : targets) {
        SCOPED_TRACE(target.name);
        const ForcedTarget forced(target);
        ASSERT_NO_FATAL_FAILURE(run());
    }
}

TEST(Flip, EveryFormatAlignmentAndRowOrderMatchesTheDefinition) {
    ForFormatsAndTargets([](PixelFormat format, Random& random) {
        for (int i = 0; i < 30; ++i) {
            const TestImage image(TurnedShape(random, format, i), random);
            TestFactory factory(kAlignments[Between(random, 0, kAlignments.size() - 1)]);
            const bool horizontal = i % 2 == 0;
            SCOPED_TRACE(testing::Message() << image.GetShape() << " to alignment " << int{factory.alignment}
                                            << (horizontal ? " horizontal" : " vertical"));
            const auto value = [&](unsigned int x, unsigned int y) { return FlippedValue(image, horizontal, x, y); };
            void* memory = nullptr;
            ASSERT_TRUE(ImageUtil::Flip(image, horizontal, !horizontal, &factory, &memory));
            ASSERT_EQ(factory.lastMemory, &memory);
            if (horizontal) {
                ExpectPainted(factory, factory.alignment, value);
            } else {  // whole bytes move, the unused bits of the last one included
                for (unsigned int y = 0; y < image.GetHeight(); ++y) {
                    const unsigned int rowBytes = RowStride(image.GetWidth(), format, 0);
                    const TestImage& flipped = *factory.last;
                    ASSERT_TRUE(std::equal(image.GetPixelData() + y * image.Stride(),
                                           image.GetPixelData() + y * image.Stride() + rowBytes,
                                           flipped.GetPixelData() + (image.GetHeight() - 1 - y) * flipped.Stride()));
                }
                ASSERT_TRUE(SamePicture(*ImageUtil::Flip(*factory.last, false, true, nullptr, nullptr), image));
            }
            const auto plain = ImageUtil::Flip(image, horizontal, !horizontal, nullptr, nullptr);
            ASSERT_EQ(plain->GetAlignment(), image.GetAlignment());
            ASSERT_TRUE(SamePicture(*plain, *factory.last));
        }
    });
}

TEST(Flip, BothIsAHalfTurnAndNeitherAClone) {
    Random random(2);
    for (const PixelFormat format : kPixelFormats) {
        const TestImage image(RandomShape(random, format, 20), random);
        EXPECT_TRUE(SamePicture(*ImageUtil::Flip(image, true, true, nullptr, nullptr),
                                *ImageUtil::Rotate(image, 2, nullptr, nullptr)));
        EXPECT_TRUE(SamePicture(*ImageUtil::Flip(image, false, false, nullptr, nullptr), image));
    }
}

TEST(Rotate, EveryFormatAlignmentAndRowOrderMatchesTheDefinition) {
    ForFormatsAndTargets([](PixelFormat format, Random& random) {
        for (int i = 0; i < 30; ++i) {
            const TestImage image(TurnedShape(random, format, i), random);
            const int turns = i % 3 + 1;
            const int count = turns + 4 * static_cast<int>(Between(random, 0, 2)) - (i % 2 == 0 ? 0 : 12);
            // Packed pixels are laid by the new image's alignment, others by the source's, whatever block they get.
            TestFactory factory(kAlignments[Between(random, 0, kAlignments.size() - 1)]);
            SCOPED_TRACE(testing::Message() << image.GetShape() << " to alignment " << int{factory.alignment} << ", "
                                            << count << " quarter turns");
            ASSERT_TRUE(ImageUtil::Rotate(image, count, &factory, nullptr));
            ASSERT_EQ(factory.last->GetWidth(), turns == 2 ? image.GetWidth() : image.GetHeight());
            ASSERT_EQ(factory.last->GetHeight(), turns == 2 ? image.GetHeight() : image.GetWidth());
            const auto value = [&](unsigned int x, unsigned int y) { return TurnedValue(image, turns, x, y); };
            ExpectPainted(factory, BitsPerPixel(format) < 8 ? factory.alignment : image.GetAlignment(), value);

            const auto plain = ImageUtil::Rotate(image, count, nullptr, nullptr);
            TestImage expected({plain->GetWidth(), plain->GetHeight(), format});
            Paint(expected, value);
            ASSERT_TRUE(SamePicture(*plain, expected));
        }
    });
}

TEST(Rotate, MultiplesOfFourWriteNothingButZeroClones) {
    Random random(5);
    TestFactory factory;
    for (const PixelFormat format : {Index1, Bgra32}) {
        const TestImage image(Shape{6, 3, format}, random);
        for (const int count : {4, -4, 8, -2147483647 - 1}) {
            ASSERT_TRUE(ImageUtil::Rotate(image, count, &factory, nullptr));
            EXPECT_EQ(factory.last->Bytes(), TestImage(image.GetShape()).Bytes());
        }
        ASSERT_TRUE(ImageUtil::Rotate(image, 0, &factory, nullptr));
        EXPECT_EQ(factory.last->Bytes(), image.Bytes());
    }
}

TEST(FlipRotate, BreachesOfTheFactoryContractDoNoHarm) {
    Random random(6);
    const TestImage image(Shape{9, 7, Bgr24}, random);
    TestFactory low, refusing, hollow;
    low.rowsLeftOut = 3;
    refusing.refuse = true;
    hollow.withoutMemory = true;
    TestImage paged(Shape{2, 2, Bgra32}), nothing(Shape{0, 4, Index4, 4, true});
    paged.HideMemory();
    const auto flip = [](const TestImage& picture, int way, IGraphicsFactory* factory) {
        return way < 0 ? ImageUtil::Rotate(picture, way, factory, nullptr)
                       : ImageUtil::Flip(picture, way == 0, way == 1, factory, nullptr);
    };
    for (const int way : {-3, -2, -1, 0, 1}) {
        EXPECT_TRUE(flip(image, way, &low));
        EXPECT_TRUE(low.last->GuardsIntact());
        EXPECT_FALSE(flip(image, way, &refusing));
        EXPECT_FALSE(flip(image, way, &hollow));
        EXPECT_FALSE(flip(paged, way, nullptr));
        EXPECT_TRUE(flip(nothing, way, nullptr));
    }
}

}  // namespace
}  // namespace vantu::test
