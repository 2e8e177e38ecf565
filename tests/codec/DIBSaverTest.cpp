#include <vantu/CDIBSaver.h>

#include "codec/Files.h"
#include "pixel/Formats.h"

namespace vantu::test {
namespace {

Bytes Saved(const IQorImage& image) {
    const TempFile file;
    EXPECT_TRUE(CDIBSaver().Save(image, file.Descriptor()));
    return file.Content();
}

TEST(DibSaver, WritesTheseBytes) {
    TestImage image({3, 2, PixelFormat::Index4, 3, false});
    const Bytes pixels = {0x12, 0x30, 0xAA, 0x45, 0x60, 0xBB};
    std::copy(pixels.begin(), pixels.end(), image.GetPixelData());
    image.SetPalette(std::make_unique<ColorMap>(2));
    (*image.GetPalette())[1] = Color(0x40102030U);
    const Bytes expected = {
        'B', 'M', 68, 0, 0, 0, 0, 0, 0, 0, 62, 0, 0, 0,                          // file size, offset of the rows
        40, 0, 0, 0, 3, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 1, 0, 4, 0,             // header size, width, height,
                                                                                 // planes, bits
        0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0,  // size of the rows, entries
        0, 0, 0, 0, 0x30, 0x20, 0x10, 0,                                         // palette
        0x12, 0x30, 0xAA, 0x45, 0x60, 0xBB,                                      // rows at the image's own stride
    };
    EXPECT_EQ(Saved(image), expected);
}

TEST(DibSaver, LoadedBackEveryFormatHasItsBytes) {
    Random random(52);
    for (const PixelFormat format : kPixelFormats) {
        for (const bool bottomUp : {false, true}) {
            for (const unsigned int width : {1U, 7U, 32U}) {
                TestImage image({width, 5, format, 4, bottomUp}, random);
                SCOPED_TRACE(testing::Message() << image.GetShape());
                const unsigned int bits = BitsPerPixel(format);
                if (bits <= 8) image.SetPalette(RandomPalette(1U << bits, random));
                const TempFile file(Saved(image));
                const auto back = LoadFrom("bmp", file.Descriptor(), nullptr);
                ASSERT_TRUE(back);
                EXPECT_EQ(back->IsBottomUp(), bottomUp);
                EXPECT_EQ(BitsPerPixel(back->GetPixelFormat()), bits);
                EXPECT_EQ(Bytes(back->GetPixelData(), back->GetPixelData() + image.Bytes().size()), image.Bytes());
                for (unsigned int i = 0; bits <= 8 && i < image.GetPalette()->GetSize(); ++i) {
                    const Color before = (*image.GetPalette())[i];
                    const Color after = (*back->GetPalette())[i];
                    EXPECT_EQ(after.GetRed(), before.GetRed());
                    EXPECT_EQ(after.GetGreen(), before.GetGreen());
                    EXPECT_EQ(after.GetBlue(), before.GetBlue());
                    EXPECT_EQ(after.GetAlpha(), 255) << "alpha is lost";
                }
            }
        }
    }
}

TEST(DibSaver, HeadersAloneAndFilesThatCannotBe) {
    TestImage flat({3, 0, PixelFormat::Bgr24});
    flat.SetPalette(std::make_unique<ColorMap>(0));
    EXPECT_EQ(Saved(flat).size(), 54U);
    EXPECT_TRUE(CDIBSaver().Save(flat, -1)) << "writing errors are not reported";
    EXPECT_FALSE(CDIBSaver().Save(flat, FixturePath("no such folder/file.bmp")));

    const std::string path = testing::TempDir() + "imageop_saver.bmp";
    const TestImage image({3, 2, PixelFormat::Bgr24});
    EXPECT_TRUE(CDIBSaver().Save(image, path));
    EXPECT_TRUE(CDIBSaver().Save(flat, std::wstring(path.begin(), path.end())));
    EXPECT_EQ(ReadAll(path).size(), 54U) << "the longer file before is emptied";
    unlink(path.c_str());
}

}  // namespace
}  // namespace vantu::test
