#include <gtest/gtest.h>
#include <vantu/ImageUtil.h>

#include <functional>

#include "support/Picture.h"
#include "support/TestImage.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

constexpr Range<int, 2> kWhole{1, 7, 0, -3};
const Color kColor(0x80C86432);

/// Runs `clear` on random images and rectangles of a format and compares every byte with `value(x, y)` stored pixel by
/// pixel.
void ExpectFills(PixelFormat format, const std::function<bool(IQorImage&, const Range<int, 2>&)>& clear,
                 const std::function<unsigned int(unsigned int)>& value) {
    Random random(static_cast<unsigned int>(format));
    const unsigned int perByte = std::max(1U, 8 / BitsPerPixel(format));
    for (int i = 0; i < 200; ++i) {
        TestImage image(RandomShape(random, format, 40), random);
        TestImage expected = [&] {
            TestImage copy(image.GetShape());
            std::ranges::copy(image.Bytes(), copy.GetPixelData());
            return copy;
        }();
        const auto [width, height] = std::pair(image.GetWidth(), image.GetHeight());
        const unsigned int x0 = Between(random, 0, width), x1 = Between(random, x0, width);
        const unsigned int y0 = Between(random, 0, height), y1 = Between(random, y0, height);
        const bool refused = x1 > x0 && y1 > y0 && x1 / perByte < (x0 + perByte - 1) / perByte;
        for (unsigned int y = y0; y < y1 && !refused; ++y) {
            for (unsigned int x = x0; x < x1; ++x) SetValueAt(expected, x, y, value(ValueAt(image, x, y)));
        }
        const Range<int, 2> range{static_cast<int>(x0), static_cast<int>(y0), static_cast<int>(x1),
                                  static_cast<int>(y1)};
        SCOPED_TRACE(testing::Message() << image.GetShape() << ": " << x0 << ' ' << y0 << ' ' << x1 << ' ' << y1);
        ASSERT_EQ(clear(image, range), !refused);
        ASSERT_EQ(image.Bytes(), expected.Bytes());
        ASSERT_TRUE(image.GuardsIntact());
    }
}

TEST(Clear, WritesTheColourInEveryFormatOfWholeBytes) {
    for (const PixelFormat format : {Index8, Rgb565, Rgb555, Bgr24, Bgra32Premultiplied, Bgra32Inverted, Bgra32}) {
        unsigned int value = 0;
        DispatchFormat(format, 0, [&]<PixelFormat F>() {
            unsigned char pixel[4] = {};
            WritePixel<F>(pixel, kColor);
            if constexpr (BitsPerPixel(F) >= 8) value = LoadValue<F>(pixel);
            return 0;
        });
        ExpectFills(
            format, [](IQorImage& image, const auto& range) { return ImageUtil::Clear(image, kColor, range); },
            [=](unsigned int) { return value; });
    }
}

TEST(ClearIndex, WritesTheMostSignificantByteFirst) {
    struct Case {
        PixelFormat format;
        unsigned int index, stored;
    };
    for (const auto& [format, index, stored] :
         {Case{Index1, 2, 1}, Case{Index1, 0, 0}, Case{Index4, 0x15, 5}, Case{Index8, 0x1A7, 0xA7},
          Case{Rgb565, 0x1234, 0x3412}, Case{Bgr24, 0x112233, 0x332211}, Case{Bgra32, 0x11223344, 0x44332211}}) {
        ExpectFills(
            format,
            [index = index](IQorImage& image, const auto& range) { return ImageUtil::ClearIndex(image, index, range); },
            [stored = stored](unsigned int) { return stored; });
    }
}

TEST(ClearPixelAlpha, LeavesColourBytesAlone) {
    for (const PixelFormat format : {Bgra32Premultiplied, Bgra32Inverted, Bgra32}) {
        const unsigned int stored = format == Bgra32Inverted ? 0xBFU : 0x40U;
        ExpectFills(
            format, [](IQorImage& image, const auto& range) { return ImageUtil::ClearPixelAlpha(image, 0x40, range); },
            [=](unsigned int pixel) { return (pixel & 0xFFFFFF) | stored << 24; });
    }
    TestImage opaque(Shape{2, 2, Bgr24});
    EXPECT_FALSE(ImageUtil::ClearPixelAlpha(opaque, 0, kWhole));
}

TEST(Clear, WholeImageKeepsTheBytesBetweenRows) {
    TestImage bits(Shape{11, 2, Index1, 4});
    EXPECT_TRUE(ImageUtil::ClearIndex(bits, 1, kWhole));
    EXPECT_EQ(bits.Bytes(), (std::vector<unsigned char>{0xFF, 0xFF, 0xCD, 0xCD, 0xFF, 0xFF, 0xCD, 0xCD}));
    TestImage samples(Shape{3, 2, Index8, 4});
    EXPECT_TRUE(ImageUtil::Clear(samples, kColor, kWhole));
    EXPECT_EQ(samples.Bytes(), (std::vector<unsigned char>{0, 0, 0, 0xCD, 0, 0, 0, 0xCD}));
    TestImage alpha(Shape{1, 2, Bgra32Inverted, 8});
    EXPECT_TRUE(ImageUtil::ClearPixelAlpha(alpha, 0, kWhole));
    EXPECT_EQ(alpha.Bytes()[3], 0xFF);
    EXPECT_EQ(alpha.Bytes()[7], 0xCD);
    EXPECT_EQ(alpha.Bytes()[11], 0xFF);
    TestImage packed(Shape{5, 3, Index8, 1});
    EXPECT_TRUE(ImageUtil::ClearIndex(packed, 9, kWhole));
    EXPECT_EQ(packed.Bytes(), std::vector<unsigned char>(15, 9));
}

TEST(Clear, RefusalsTouchNothing) {
    Random random(9);
    TestImage palette(Shape{8, 2, Bgra32});
    palette.SetPalette(RandomPalette(4, random));
    EXPECT_FALSE(ImageUtil::Clear(palette, kColor, kWhole));
    for (const PixelFormat format : {Index1, Index4}) {
        TestImage image(Shape{16, 2, format});
        EXPECT_FALSE(ImageUtil::Clear(image, kColor, kWhole));
        EXPECT_FALSE(ImageUtil::Clear(image, kColor, {0, 0, 8, 1}));
        EXPECT_TRUE(ImageUtil::Clear(image, kColor, {3, 0, 3, 2}));
        EXPECT_EQ(image.Bytes(), TestImage(image.GetShape()).Bytes());
    }
    TestImage unknown(Shape{2, 2, PixelFormat{10}});
    EXPECT_FALSE(ImageUtil::ClearIndex(unknown, 1, kWhole));
    EXPECT_FALSE(ImageUtil::ClearPixelAlpha(unknown, 1, kWhole));
}

TEST(Clear, ImageWithoutMemoryIsRefusedUnlessNothingIsToBeFilled) {
    TestImage image(Shape{4, 4, Bgra32}), bits(Shape{9, 1, Index1});
    image.HideMemory();
    bits.HideMemory();
    for (const auto& [range, empty] :
         {std::pair(kWhole, false), std::pair(Range<int, 2>{0, 0, 1, 1}, false),
          std::pair(Range<int, 2>{2, 0, 2, 4}, true), std::pair(Range<int, 2>{0, 3, 4, 1}, true)}) {
        EXPECT_EQ(ImageUtil::Clear(image, kColor, range), empty);
        EXPECT_EQ(ImageUtil::ClearIndex(image, 5, range), empty);
        EXPECT_EQ(ImageUtil::ClearPixelAlpha(image, 5, range), empty);
        EXPECT_EQ(ImageUtil::ClearIndex(bits, 1, range), empty);
    }
}

TEST(ClearPaletteAlpha, CountsEntriesInSixteenBits) {
    for (const auto& [size, cleared] : {std::pair(0U, 0U), std::pair(16U, 16U), std::pair(65536U + 3U, 3U)}) {
        ColorMap palette(size);
        EXPECT_TRUE(ImageUtil::ClearPaletteAlpha(palette, 7));
        for (unsigned int i = 0; i < size; ++i) {
            ASSERT_EQ(std::as_const(palette)[i].GetAlpha(), i < cleared ? 7 : 255);
        }
    }
}

}  // namespace
}  // namespace vantu::test
