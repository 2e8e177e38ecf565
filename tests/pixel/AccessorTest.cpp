#include "pixel/Accessor.h"

#include <gtest/gtest.h>

#include <array>

#include "pixel/DynamicAccessor.h"
#include "support/Picture.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

TEST(Accessor, BottomUpStartsAtTheLastRowInMemoryAndStepsBack) {
    std::array<unsigned char, 32> block{};
    const Accessor<Bgr24> view(block.data(), 2, 4, 4, true);
    EXPECT_EQ(view.pixels, block.data() + 24);
    EXPECT_EQ(view.rowStep, -8);
    EXPECT_EQ(view.Address(1, 3), block.data() + 3);
    const Accessor<Bgr24> topDown(block.data(), 2, 4, 4, false);
    EXPECT_EQ(topDown.Address(1, 3), block.data() + 27);
    EXPECT_EQ(topDown.step, 3U);
    EXPECT_EQ(Accessor<Index4>(block.data(), 2, 4, 4, false).step, 0U) << "indices are not addressed in bytes";
}

TEST(IndexedAccessor, PacksFromTheMostSignificantBitDownAndKeepsNeighbours) {
    std::array<unsigned char, 2> block{0xA5, 0x3C};
    const IndexedAccessor<Index1> bits(block.data(), 16, 1, 0, false, nullptr);
    for (unsigned int x = 0; x < 16; ++x) EXPECT_EQ(bits.GetValue(x, 0), 0xA53CU >> (15 - x) & 1) << x;
    bits.SetValue(1, 0, 0xFF);
    bits.SetValue(10, 0, 0xFE);
    EXPECT_EQ(block, (std::array<unsigned char, 2>{0xE5, 0x1C}));

    const IndexedAccessor<Index4> nibbles(block.data(), 4, 1, 0, false, nullptr);
    nibbles.SetValue(0, 0, 3);
    nibbles.SetValue(3, 0, 0xF7);
    EXPECT_EQ(block, (std::array<unsigned char, 2>{0x35, 0x17}));
    EXPECT_EQ(nibbles.GetValue(1, 0), 5U);

    const IndexedAccessor<Index8> bytes(block.data(), 2, 1, 0, false, nullptr);
    bytes.SetValue(1, 0, 0x1FE);
    EXPECT_EQ(bytes.GetValue(1, 0), 0xFEU);
}

TEST(IndexedAccessor, WideFormatsShowEntryZeroAndStoreNothing) {
    std::array<unsigned char, 8> block;
    block.fill(0xFF);
    ColorMap palette(2);
    palette[0] = Color(0x12345678);
    const IndexedAccessor<Bgra32Premultiplied> view(block.data(), 2, 1, 0, false, &palette);
    view.SetValue(1, 0, 0);
    for (unsigned char byte : block) EXPECT_EQ(byte, 0xFF);
    Color color;
    view.GetColor(1, 0, color);
    EXPECT_EQ(view.GetValue(1, 0), 0U);
    EXPECT_EQ(Argb(color), 0x12345678U);
    EXPECT_EQ((IndexedAccessor<Rgb565>(block.data(), 2, 1, 0, false, nullptr).GetValue(1, 0)), 0U);
    EXPECT_EQ((IndexedAccessor<Bgr24>(block.data(), 2, 1, 0, false, nullptr).GetValue(1, 0)), 0U);
}

TEST(DynamicAccessor, OfConstImagesChangesNothing) {
    Random random(2);
    for (const PixelFormat format : kPixelFormats) {
        TestImage image(Shape{5, 2, format, 0, true}, random);
        const auto before = image.Bytes();
        for (const bool paletted : {false, true}) {
            if (paletted) image.SetPalette(RandomPalette(256, random));
            const auto record = MakeConstAccessor(image);
            const auto writable = MakeAccessor(image);
            Color a, b;
            record->SetColor(*record, 1, 1, Color(0x55555555));
            record->SetValue(*record, 1, 1, 0x55555555);
            EXPECT_EQ(image.Bytes(), before);
            record->GetColor(*record, 1, 1, a);
            writable->GetColor(*writable, 1, 1, b);
            EXPECT_EQ(Argb(a), Argb(b));
            EXPECT_EQ(record->GetValue == nullptr, BitsPerPixel(format) < 8 && !paletted);
        }
    }
}

TEST(DynamicAccessor, IsNullForAFormatThatIsNone) {
    for (const unsigned int format : {0U, 10U, 257U}) {
        TestImage image(Shape{1, 1, PixelFormat{format}});
        EXPECT_FALSE(MakeAccessor(image));
        EXPECT_FALSE(MakeConstAccessor(image));
    }
}

}  // namespace
}  // namespace vantu::test
