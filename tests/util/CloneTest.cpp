#include <gtest/gtest.h>
#include <vantu/CQorImage.h>
#include <vantu/ImageUtil.h>

#include "support/TestImage.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

TEST(Clone, KeepsShapeAndEveryByteWithoutAFactory) {
    Random random(1);
    for (const Shape& shape : {Shape{13, 5, Index1, 3, true}, Shape{7, 4, Index8, 0, false},
                               Shape{5, 3, Bgr24, 8, true}, Shape{0, 3, Bgra32, 4, false}}) {
        SCOPED_TRACE(testing::Message() << shape);
        const TestImage source(shape, random);
        const auto clone = ImageUtil::Clone(source, nullptr, nullptr);
        ASSERT_TRUE(clone);
        EXPECT_EQ(clone->GetWidth(), shape.width);
        EXPECT_EQ(clone->GetHeight(), shape.height);
        EXPECT_EQ(clone->GetPixelFormat(), shape.format);
        EXPECT_EQ(clone->GetAlignment(), shape.alignment);
        EXPECT_EQ(clone->IsBottomUp(), shape.bottomUp);
        EXPECT_TRUE(std::ranges::equal(
            source.Bytes(), std::vector(clone->GetPixelData(), clone->GetPixelData() + source.Bytes().size())));
    }
}

TEST(Clone, HasThePaletteOfAFreshImage) {
    Random random(2);
    TestImage source(Shape{4, 4, Index8}, random);
    source.SetPalette(RandomPalette(256, random));
    const auto clone = ImageUtil::Clone(source, nullptr, nullptr);
    ASSERT_TRUE(clone && clone->GetPalette());
    for (unsigned int i = 0; i < 256; ++i) EXPECT_EQ(std::as_const(*clone->GetPalette())[i].GetRed(), i);
}

TEST(Clone, OtherAlignmentSkewsRowsAndStaysInsideBothBlocks) {
    Random random(3);
    for (const unsigned char from : kAlignments) {
        for (const unsigned char to : kAlignments) {
            const TestImage source(Shape{5, 6, Bgr24, from, true}, random);
            TestFactory factory(to);
            void* memory = nullptr;
            ASSERT_TRUE(ImageUtil::Clone(source, &factory, &memory));
            EXPECT_EQ(factory.lastMemory, &memory);
            auto expected = source.Bytes();
            expected.resize(factory.last->Bytes().size());  // zeros where the source has ended
            EXPECT_EQ(factory.last->Bytes(), expected) << int{from} << " to " << int{to};
            EXPECT_TRUE(factory.last->GuardsIntact());
        }
    }
}

TEST(Clone, ImageLowerThanAskedForGetsWhatFits) {
    Random random(4);
    const TestImage source(Shape{5, 6, Index8}, random);
    TestFactory factory(4);
    factory.rowsLeftOut = 2;
    ASSERT_TRUE(ImageUtil::Clone(source, &factory, nullptr));
    auto expected = source.Bytes();
    expected.resize(8 * 4);
    EXPECT_EQ(factory.last->Bytes(), expected);
    EXPECT_TRUE(factory.last->GuardsIntact());
}

TEST(Clone, IsEmptyWhenNoPixelsCanBeHad) {
    TestImage source(Shape{2, 2, Bgra32});
    TestFactory refusing, hollow;
    refusing.refuse = true;
    hollow.withoutMemory = true;
    EXPECT_FALSE(ImageUtil::Clone(source, &refusing, nullptr));
    EXPECT_FALSE(ImageUtil::Clone(source, &hollow, nullptr));
    source.HideMemory();
    EXPECT_FALSE(ImageUtil::Clone(source, nullptr, nullptr));

    TestImage nothing(Shape{0, 2, Bgra32});
    nothing.HideMemory();
    EXPECT_TRUE(ImageUtil::Clone(nothing, nullptr, nullptr));
}

}  // namespace
}  // namespace vantu::test
