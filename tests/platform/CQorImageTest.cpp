#include <gtest/gtest.h>
#include <vantu/CQorImage.h>
#include <vantu/CQorStorage.h>
#include <vantu/ImageUtil.h>

#include <algorithm>
#include <new>
#include <vector>

#include "pixel/Formats.h"

namespace vantu {
namespace {

TEST(CQorImage, IsBornZeroedWithAGreyRampForIndices) {
    for (const PixelFormat format : kPixelFormats) {
        CQorImage image(5, 3, format, 4, true);
        const unsigned char* const data = image.GetPixelData();
        const unsigned int size = RowStride(5, format, 4) * 3;
        EXPECT_TRUE(std::all_of(data, data + size, [](unsigned char byte) { return byte == 0; }));
        const unsigned int bits = BitsPerPixel(format);
        ASSERT_EQ(image.GetPalette() != nullptr, bits <= 8);
        if (bits > 8) continue;
        const ColorMap& palette = *image.GetPalette();
        ASSERT_EQ(palette.GetSize(), 1U << bits);
        for (unsigned int i = 0; i < palette.GetSize(); ++i) {
            const Color color = palette[i];
            EXPECT_EQ(color.GetGreen(), i * 255 / (palette.GetSize() - 1));
            EXPECT_TRUE(color.GetRed() == color.GetGreen() && color.GetBlue() == color.GetGreen());
            EXPECT_EQ(color.GetAlpha(), 255);
        }
        image.SetPalette(nullptr);
        EXPECT_EQ(image.GetPalette(), nullptr);
    }
}

TEST(CQorImage, SizesThatCannotBeHadThrow) {
    // The row of the first wraps in 32 bits; the block of the second does not fit any memory.
    EXPECT_THROW(CQorImage(0xFFFFFFFFU, 1, PixelFormat::Bgr24, 4, false), std::bad_alloc);
    EXPECT_THROW(CQorImage(0x08000000U, 1, PixelFormat::Bgra32, 255, false), std::bad_alloc);
    EXPECT_NO_THROW(CQorImage(0, 0, PixelFormat::Bgr24, 4, false));
}

TEST(CQorImage, OnMemoryOfTheCallers) {
    std::vector<unsigned char> memory(3 * 300, 0xCD);
    for (const PixelFormat format : kPixelFormats) {
        for (const unsigned int width : {1U, 9U, 50U, 75U}) {
            const unsigned int rowBytes = RowStride(width, format, 0);
            for (unsigned int pitch = 0; pitch <= 300; ++pitch) {
                bool possible = false;
                for (unsigned int a = 1; a <= 255; ++a)
                    possible = possible || (pitch >= rowBytes && pitch % a == 0 && pitch - rowBytes < a);
                const auto image = CQorImage::OnMemory(memory.data(), width, 3, format, pitch, false);
                ASSERT_EQ(image != nullptr, possible) << width << " pixels at " << pitch;
                if (!image) continue;
                EXPECT_EQ(RowStride(width, format, image->GetAlignment()), pitch);
                EXPECT_EQ(image->GetPixelData(), memory.data());
            }
        }
    }
    EXPECT_FALSE(CQorImage::OnMemory(memory.data(), 0x40000000, 1, PixelFormat::Bgra32, 0, false)) << "a row wraps";

    for (const bool bottomUp : {false, true}) {
        const auto image = CQorImage::OnMemory(memory.data(), 4, 3, PixelFormat::Bgr24, 60, bottomUp);
        EXPECT_FALSE(image->SetStorage(std::make_shared<CQorStorage>(), 0, nullptr)) << "it is not paged out";
        EXPECT_FALSE(image->Store() || image->Unload() || image->NeedsManagement());
        std::vector<unsigned char> expected = memory;
        std::fill_n(&expected[(bottomUp ? 2 : 0) * 60 + 3], 6, static_cast<unsigned char>(0x77));
        ImageUtil::Clear(*image, 0xFF777777, {1, 0, 3, 1});
        EXPECT_EQ(memory, expected);
    }
}

TEST(CQorImage, PagesOutAndInOnce) {
    CQorImage image(3, 2, PixelFormat::Bgr24, 4, false);
    EXPECT_FALSE(image.Store());
    EXPECT_FALSE(image.NeedsManagement());
    const auto storage = std::make_shared<CQorStorage>();
    EXPECT_TRUE(image.SetStorage(storage, 0, nullptr));
    EXPECT_TRUE(image.NeedsManagement());
    EXPECT_FALSE(image.Unload()) << "nothing is stored yet";
    image.GetPixelData()[7] = 99;
    EXPECT_TRUE(image.Store());
    EXPECT_TRUE(image.Unload());
    EXPECT_EQ(image.GetPixelData(), nullptr);
    EXPECT_FALSE(image.Store()) << "there is nothing to store";
    EXPECT_TRUE(image.Load());
    EXPECT_EQ(image.GetPixelData()[7], 99);
    EXPECT_FALSE(image.Unload()) << "the storage was read to its end";
    EXPECT_TRUE(image.Store());
    EXPECT_TRUE(image.Erase());
    EXPECT_FALSE(image.Erase());
}

TEST(ColorMap, BeyondTheEndIsBlackAndTakesNothing) {
    ColorMap map(2);
    EXPECT_EQ(map.GetSize(), 2U);
    EXPECT_EQ(map[1].GetAlpha(), 255);
    map[2] = Color(0x12345678U);
    map[0xFFFFFFFFU].SetRed(9);
    const ColorMap& view = map;
    for (const unsigned int index : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        EXPECT_EQ(view[index].GetRed(), 0) << index;
        EXPECT_EQ(view[index].GetAlpha(), 255) << index;
    }
    EXPECT_EQ(map[2].GetGreen(), 0);
}

}  // namespace
}  // namespace vantu
