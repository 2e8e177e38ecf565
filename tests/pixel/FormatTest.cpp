#include <gtest/gtest.h>
#include <vantu/IQorImage.h>

#include <array>

#include "pixel/PixelCodec.h"
#include "support/Picture.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;
using Pixel = std::array<unsigned char, 4>;

template <PixelFormat F>
unsigned int Read(const Pixel& pixel) {
    Color color(0x12345678);
    ReadPixel<F>(pixel.data(), color);
    return Argb(color);
}

template <PixelFormat F>
Pixel Write(unsigned int color) {
    Pixel pixel{0xEE, 0xEE, 0xEE, 0xEE};
    WritePixel<F>(pixel.data(), Color(color));
    return pixel;
}

TEST(RowStride, RoundsWholeBytesUpToTheAlignment) {
    struct Case {
        unsigned int width;
        PixelFormat format;
        unsigned char alignment;
        unsigned int stride;
    };
    for (const auto& [width, format, alignment, stride] :
         {Case{3, Index1, 4, 4}, Case{3, Bgr24, 0, 9}, Case{0, Bgr24, 4, 0}, Case{5, Bgr24, 3, 15},
          Case{6, Bgr24, 3, 18}, Case{7, Bgr24, 3, 21}, Case{7, Index8, 3, 9}, Case{3, Index4, 1, 2},
          Case{9, Index1, 0, 2}, Case{3, Rgb565, 4, 8}, Case{1, Bgra32, 255, 255}, Case{64, Bgra32, 255, 510},
          Case{0x20000001, Index8, 8, 8}}) {
        EXPECT_EQ(RowStride(width, format, alignment), stride) << Shape{width, 1, format, alignment};
    }
    EXPECT_EQ(BitsPerPixel(PixelFormat{}), 0U);
    EXPECT_EQ(BitsPerPixel(PixelFormat{10}), 0U);
}

TEST(Rgb565, EveryWordReadsWithGreenOnTheScaleOfFiveBits) {
    for (unsigned int word = 0; word < 0x10000; ++word) {
        const unsigned int red = word / 0x800 * 255 / 31;
        const unsigned int green = word / 0x20 % 64 * 255 / 31 % 256;
        const unsigned int blue = word % 0x20 * 255 / 31;
        const Pixel pixel{static_cast<unsigned char>(word), static_cast<unsigned char>(word >> 8)};
        ASSERT_EQ(Read<Rgb565>(pixel), 0xFF000000 + red * 0x10000 + green * 0x100 + blue) << word;
    }
    EXPECT_EQ(Read<Rgb565>({0xFF, 0xFF}), 0xFFFF06FFU);
    EXPECT_EQ(Read<Rgb565>({0, 0x04}), 0xFF000700U) << "green field 32";
}

TEST(Rgb555, EveryWordReadsWithoutItsTopBit) {
    for (unsigned int word = 0; word < 0x10000; ++word) {
        const unsigned int red = word / 0x400 % 32 * 255 / 31;
        const unsigned int green = word / 0x20 % 32 * 255 / 31;
        const unsigned int blue = word % 0x20 * 255 / 31;
        const Pixel pixel{static_cast<unsigned char>(word), static_cast<unsigned char>(word >> 8)};
        ASSERT_EQ(Read<Rgb555>(pixel), 0xFF000000 + red * 0x10000 + green * 0x100 + blue) << word;
    }
}

TEST(WordFormats, EveryChannelValueIsScaledToFiveBitsInItsOwnField) {
    const auto word = [](const Pixel& pixel) { return pixel[0] + pixel[1] * 256U; };
    for (unsigned int v = 0; v < 256; ++v) {
        const unsigned int field = v * 31 / 255;
        EXPECT_EQ(word(Write<Rgb565>(v << 16)), field * 0x800);
        EXPECT_EQ(word(Write<Rgb565>(v << 8)), field * 0x20) << "the field's top bit stays clear";
        EXPECT_EQ(word(Write<Rgb565>(v)), field);
        EXPECT_EQ(word(Write<Rgb555>(v << 16)), field * 0x400);
        EXPECT_EQ(word(Write<Rgb555>(v << 8)), field * 0x20);
        EXPECT_EQ(word(Write<Rgb555>(v)), field);
    }
    EXPECT_EQ(word(Write<Rgb565>(0xFFFFFFFF)), 0xFBFFU);
    EXPECT_EQ(word(Write<Rgb555>(0x00FFFFFF)), 0x7FFFU);
    EXPECT_EQ(Read<Rgb555>(Write<Rgb555>(0xFF808080)), 0xFF7B7B7BU) << "128 comes back as 123";
    EXPECT_EQ(Write<Rgb565>(0)[2], 0xEE) << "two bytes are written";
}

TEST(PremultipliedFormats, EveryByteAndAlphaReadsAsTheTruncatedQuotient) {
    for (unsigned int a = 0; a < 256; ++a) {
        const auto alpha = static_cast<unsigned char>(a);
        const auto inverted = static_cast<unsigned char>(255 - a);
        for (unsigned int c = 0; c < 256; ++c) {
            const auto byte = static_cast<unsigned char>(c);
            const unsigned int straight = a == 0 ? 0 : c * 255 / a % 256;
            const unsigned int expected = a * 0x1000000 + straight * 0x10101;
            ASSERT_EQ(Read<Bgra32Premultiplied>({byte, byte, byte, alpha}), expected) << c << " at " << a;
            ASSERT_EQ(Read<Bgra32Inverted>({byte, byte, byte, inverted}), expected) << c << " at " << a;
            const auto stored = static_cast<unsigned char>(a * c / 255);
            const unsigned int color = a * 0x1000000 + c * 0x10101;
            ASSERT_EQ(Write<Bgra32Premultiplied>(color), (Pixel{stored, stored, stored, alpha})) << c << " at " << a;
            ASSERT_EQ(Write<Bgra32Inverted>(color), (Pixel{stored, stored, stored, inverted})) << c << " at " << a;
        }
    }
    EXPECT_EQ(Read<Bgra32Premultiplied>({200, 0, 0, 100}) & 255, 254U) << "a byte above its alpha wraps";
    EXPECT_EQ(Read<Bgra32Premultiplied>(Write<Bgra32Premultiplied>(0x80C8C8C8)), 0x80C7C7C7U);
}

TEST(ByteFormats, StoreBlueFirst) {
    EXPECT_EQ(Read<Bgr24>({1, 2, 3, 4}), 0xFF030201U);
    EXPECT_EQ(Read<Bgra32>({1, 2, 3, 4}), 0x04030201U);
    EXPECT_EQ(Read<Bgra32Premultiplied>({51, 102, 153, 255}), 0xFF996633U);
    EXPECT_EQ(Read<Bgra32Inverted>({51, 102, 153, 0}), 0xFF996633U);
    EXPECT_EQ(Write<Bgr24>(0x04030201), (Pixel{1, 2, 3, 0xEE}));
    EXPECT_EQ(Write<Bgra32>(0x04030201), (Pixel{1, 2, 3, 4}));
    EXPECT_EQ(Write<Bgra32Premultiplied>(0xFF030201), (Pixel{1, 2, 3, 255}));
    EXPECT_EQ(Write<Bgra32Inverted>(0xFF030201), (Pixel{1, 2, 3, 0}));
}

TEST(IndexFormats, HoldNoColors) {
    EXPECT_EQ(Read<Index1>({0xFF}), 0x12345678U);
    EXPECT_EQ(Read<Index8>({0xFF}), 0x12345678U);
    EXPECT_EQ(Write<Index4>(0x01020304)[0], 0xEE);
    EXPECT_EQ(Write<Index8>(0x01020304)[0], 0xEE);
}

}  // namespace
}  // namespace vantu::test
