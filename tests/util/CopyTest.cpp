#include <gtest/gtest.h>
#include <vantu/ImageUtil.h>

#include "support/Picture.h"
#include "support/TestImage.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

TEST(Copy, MovesRawValuesBetweenImagesOfOneFormat) {
    Random random(1);
    for (const PixelFormat format : kPixelFormats) {
        for (int i = 0; i < 20; ++i) {
            TestImage source(RandomShape(random, format, 20), random), target(RandomShape(random, format, 20), random);
            if (BitsPerPixel(format) < 8) {
                source.SetPalette(RandomPalette(2, random));
                target.SetPalette(RandomPalette(16, random));
            }
            const unsigned int width = std::min(source.GetWidth(), target.GetWidth());
            const unsigned int height = std::min(source.GetHeight(), target.GetHeight());
            TestImage expected(target.GetShape());
            std::ranges::copy(target.Bytes(), expected.GetPixelData());
            // The upper right corner of the source to the lower left corner of the target.
            const unsigned int left = source.GetWidth() - width, top = target.GetHeight() - height;
            if (top > height) continue;  // beyond the source's rectangle nothing is copied
            for (unsigned int y = 0; y < height; ++y) {
                for (unsigned int x = 0; x < width; ++x) {
                    SetValueAt(expected, x, top + y, ValueAt(source, left + x, y));
                }
            }
            SCOPED_TRACE(testing::Message() << source.GetShape() << " to " << target.GetShape());
            ASSERT_TRUE(ImageUtil::Copy(
                source, {static_cast<int>(left), 0, static_cast<int>(source.GetWidth()), static_cast<int>(height)},
                target, {0, static_cast<int>(top)}));
            ASSERT_EQ(target.Bytes(), expected.Bytes());
            ASSERT_TRUE(target.GuardsIntact());
        }
    }
}

TEST(Copy, GoesFromTheTopLeftOnInsideOneImage) {
    Random random(4);
    for (const PixelFormat format : {Index8, Rgb565, Bgr24, Bgra32}) {
        for (int i = 0; i < 40; ++i) {
            TestImage image(Shape{12, 9, format, 4, i % 2 == 0}, random), expected(image.GetShape());
            std::ranges::copy(image.Bytes(), expected.GetPixelData());
            const unsigned int left = Between(random, 0, 4), top = Between(random, 0, 3);
            const unsigned int x = Between(random, 0, 4), y = Between(random, 0, 3);
            for (unsigned int row = 0; row < 6; ++row) {
                for (unsigned int column = 0; column < 8; ++column) {
                    SetValueAt(expected, x + column, y + row, ValueAt(expected, left + column, top + row));
                }
            }
            const auto x0 = static_cast<int>(left), y0 = static_cast<int>(top);
            ASSERT_TRUE(
                ImageUtil::Copy(image, {x0, y0, x0 + 8, y0 + 6}, image, {static_cast<int>(x), static_cast<int>(y)}));
            ASSERT_EQ(image.Bytes(), expected.Bytes());
        }
    }
}

TEST(Copy, SeesPixelsOfSeveralBytesThroughAPalette) {
    Random random(5);
    TestImage source(Shape{3, 1, Bgra32}, random), target(Shape{3, 1, Bgra32});
    source.SetPalette(RandomPalette(2, random));
    EXPECT_TRUE(ImageUtil::Copy(source, {0, 0, 3, 1}, target, {0, 0}));
    EXPECT_EQ(target.Bytes(), std::vector<unsigned char>(12));  // all are 0
    target.SetPalette(RandomPalette(2, random));
    source.SetPalette(nullptr);
    EXPECT_TRUE(ImageUtil::Copy(source, {0, 0, 3, 1}, target, {0, 0}));
    EXPECT_EQ(target.Bytes(), std::vector<unsigned char>(12)) << "and cannot be written";
}

TEST(Copy, ConvertsThroughColours) {
    Random random(2);
    TestImage indexed(Shape{2, 1, Index8}), target(Shape{2, 1, Bgra32});
    indexed.SetPalette(RandomPalette(2, random));
    (*indexed.GetPalette())[1] = Color(0x80FF4020);
    indexed.GetPixelData()[0] = 1;
    indexed.GetPixelData()[1] = 200;  // past the palette
    EXPECT_TRUE(ImageUtil::Copy(indexed, {0, 0, 2, 1}, target, {0, 0}));
    EXPECT_EQ(ValueAt(target, 0, 0), 0x80FF4020);
    EXPECT_EQ(ValueAt(target, 1, 0), ARGB_BLACK);

    TestImage premultiplied(Shape{2, 1, Bgra32Premultiplied});
    EXPECT_TRUE(ImageUtil::Copy(target, {0, 0, 1, 1}, premultiplied, {1, 0}));
    EXPECT_EQ(ValueAt(premultiplied, 0, 0), 0xCDCDCDCD);
    EXPECT_EQ(ValueAt(premultiplied, 1, 0), 0x80802010);

    TestImage samples(Shape{2, 1, Index8});
    EXPECT_TRUE(ImageUtil::Copy(samples, {0, 0, 1, 1}, target, {0, 0}));  // holds no colours: paints black
    EXPECT_EQ(ValueAt(target, 0, 0), ARGB_BLACK);
}

TEST(Copy, EarlyExitsAreTrueAndWriteNothing) {
    const TestImage source(Shape{8, 8, Index8});
    TestImage target(Shape{8, 8, Index8});
    std::fill_n(target.GetPixelData(), 64, static_cast<unsigned char>(1));
    const auto before = target.Bytes();
    struct Case {
        Range<int, 2> range;
        Point<int, 2> point;
    };
    for (const auto& [range, point] :
         {Case{{3, 0, 2, 4}, {0, 0}}, Case{{0, 0, 2, 2}, {3, 0}}, Case{{0, 0, 2, 2}, {0, 3}},
          Case{{2, 0, 2, 8}, {0, 0}}, Case{{0, 5, 8, 5}, {0, 0}}, Case{{0, 5, 8, 2}, {0, 0}}}) {
        EXPECT_TRUE(ImageUtil::Copy(source, range, target, point));
        EXPECT_EQ(target.Bytes(), before);
    }
    TestImage other(Shape{8, 8, PixelFormat{10}});
    EXPECT_TRUE(ImageUtil::Copy(source, {3, 0, 2, 4}, other, {0, 0})) << "before anything is refused";
    EXPECT_TRUE(ImageUtil::Copy(source, {0, 0, 2, 2}, target, {2, 2}));  // the rectangle's end itself still counts
    EXPECT_EQ(ValueAt(target, 3, 3), TestImage::kFreshByte);
}

TEST(Copy, RefusalsWriteNothing) {
    Random random(3);
    struct Case {
        PixelFormat from, to;
        bool targetPalette;
    };
    for (const auto& [from, to, targetPalette] :
         {Case{Bgra32, Index8, true}, Case{Bgr24, Bgra32, true}, Case{Index1, Index1, false},
          Case{Index4, Index4, false}, Case{Index1, Index1, true}, Case{PixelFormat{0}, Bgra32, false},
          Case{Bgra32, PixelFormat{12}, false}}) {
        const TestImage source(Shape{8, 2, from}, random);
        TestImage target(Shape{8, 2, to});
        if (targetPalette) target.SetPalette(RandomPalette(16, random));
        EXPECT_FALSE(ImageUtil::Copy(source, {0, 0, 8, 2}, target, {0, 0}));
        EXPECT_EQ(target.Bytes(), TestImage(target.GetShape()).Bytes());
    }
    TestImage source(Shape{2, 2, Bgra32}), target(Shape{2, 2, Bgra32});
    source.HideMemory();
    EXPECT_FALSE(ImageUtil::Copy(source, {0, 0, 2, 2}, target, {0, 0}));
    EXPECT_FALSE(ImageUtil::Copy(target, {0, 0, 2, 2}, source, {0, 0}));
    EXPECT_TRUE(ImageUtil::Copy(source, {0, 2, 2, 0}, target, {0, 0})) << "of no rows no memory is needed";
}

}  // namespace
}  // namespace vantu::test
