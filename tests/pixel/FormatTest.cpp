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

TEST(WordFormats, ScaleFieldsOfFiveBitsAndCutWhatIsLess) {
    const auto word = [](unsigned int value) {
        return Pixel{static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8), 0xEE, 0xEE};
    };
    for (const auto& [field, channel] :
         {std::pair(0U, 0U), {1U, 8U}, {2U, 16U}, {15U, 123U}, {16U, 131U}, {30U, 246U}, {31U, 255U}}) {
        EXPECT_EQ(Read<Rgb565>(word(field << 11)), 0xFF000000 | channel << 16);
        EXPECT_EQ(Read<Rgb565>(word(field << 5)), 0xFF000000 | channel << 8);
        EXPECT_EQ(Read<Rgb565>(word(field)), 0xFF000000 | channel);
        EXPECT_EQ(Read<Rgb555>(word(0x8000 | field << 10)), 0xFF000000 | channel << 16);
        EXPECT_EQ(Read<Rgb555>(word(field << 5)), 0xFF000000 | channel << 8);
        EXPECT_EQ(Read<Rgb555>(word(field)), 0xFF000000 | channel);
    }
    for (const auto& [channel, field] :
         {std::pair(8U, 0U), {9U, 1U}, {128U, 15U}, {131U, 15U}, {132U, 16U}, {254U, 30U}, {255U, 31U}}) {
        EXPECT_EQ(Write<Rgb565>(channel << 16), word(field << 11));
        EXPECT_EQ(Write<Rgb565>(channel << 8), word(field << 5)) << "the field's top bit stays clear";
        EXPECT_EQ(Write<Rgb565>(channel), word(field));
        EXPECT_EQ(Write<Rgb555>(channel << 16), word(field << 10));
        EXPECT_EQ(Write<Rgb555>(channel << 8), word(field << 5));
        EXPECT_EQ(Write<Rgb555>(channel), word(field));
    }
    EXPECT_EQ(Read<Rgb565>(word(0xFFFF)), 0xFFFF06FFU) << "green has the scale of five bits: 518 is cut to 6";
    EXPECT_EQ(Read<Rgb565>(word(0x0400)), 0xFF000700U);
}

TEST(PremultipliedFormats, TruncateBothWays) {
    struct Case {
        Pixel stored;
        unsigned int read;
        Pixel writtenBack;
    };
    for (const auto& [stored, read, writtenBack] :
         {Case{{9, 8, 7, 0}, 0, {0, 0, 0, 0}}, Case{{0, 1, 2, 3}, 0x03AA5500, {0, 1, 2, 3}},
          Case{{50, 99, 100, 100}, 0x64FFFC7F, {49, 98, 100, 100}},
          Case{{200, 0, 100, 100}, 0x64FF00FE, {99, 0, 100, 100}},  // a byte above its alpha wraps
          Case{{100, 1, 253, 254}, 0xFEFD0164, {99, 0, 252, 254}}, Case{{1, 2, 3, 255}, 0xFF030201, {1, 2, 3, 255}}}) {
        const auto inverted = [](Pixel pixel) {
            pixel[3] = static_cast<unsigned char>(255 - pixel[3]);
            return pixel;
        };
        EXPECT_EQ(Read<Bgra32Premultiplied>(stored), read);
        EXPECT_EQ(Read<Bgra32Inverted>(inverted(stored)), read);
        EXPECT_EQ(Write<Bgra32Premultiplied>(read), writtenBack);
        EXPECT_EQ(Write<Bgra32Inverted>(read), inverted(writtenBack));
    }
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
