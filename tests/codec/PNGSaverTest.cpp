#include <vantu/CPNGSaver.h>

#include <png.h>

#include <functional>
#include <tuple>

#include "codec/Files.h"
#include "pixel/DynamicAccessor.h"
#include "pixel/Formats.h"
#include "support/Picture.h"

namespace vantu::test {
namespace {

Bytes Saved(const IQorImage& image) {
    const TempFile file;
    EXPECT_TRUE(CPNGSaver().Save(image, file.Descriptor()));
    return file.Content();
}

/// The colours of a file from the top left, straight: by libpng's own reader of whole pictures, which knows palettes.
std::vector<unsigned int> Decoded(const Bytes& file, const IQorImage& like) {
    png_image picture{};
    picture.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&picture, file.data(), file.size()), 0) << picture.message;
    EXPECT_TRUE(picture.width == like.GetWidth() && picture.height == like.GetHeight());
    picture.format = PNG_FORMAT_BGRA;
    Bytes bytes(PNG_IMAGE_SIZE(picture));
    EXPECT_NE(png_image_finish_read(&picture, nullptr, bytes.data(), 0, nullptr), 0) << picture.message;
    std::vector<unsigned int> colors;
    for (std::size_t i = 0; i < bytes.size(); i += 4) colors.push_back(LoadWord32(&bytes[i]));
    return colors;
}

/// What the image shows; bare samples are greys.
std::vector<unsigned int> Shown(const IQorImage& image) {
    const auto accessor = MakeConstAccessor(image);
    const unsigned int bits = BitsPerPixel(image.GetPixelFormat());
    std::vector<unsigned int> colors;
    for (unsigned int y = 0; y < image.GetHeight(); ++y) {
        for (unsigned int x = 0; x < image.GetWidth(); ++x) {
            Color color;
            accessor->GetColor(*accessor, x, y, color);
            const bool bare = bits <= 8 && image.GetPalette() == nullptr;
            colors.push_back(bare ? ARGB_BLACK | ValueAt(image, x, y) * 255 / ((1U << bits) - 1) * 0x010101
                                  : Argb(color));
        }
    }
    return colors;
}

TEST(PngSaver, AnotherDecoderSeesWhatTheImageShows) {
    Random random(53);
    for (const PixelFormat format : kPixelFormats) {
        const unsigned int bits = BitsPerPixel(format);
        for (unsigned int i = 0; i < 24 && bits != 16; ++i) {
            TestImage image(RandomShape(random, format, 40), random);
            // None, a short one, a whole one, one with more entries than indices.
            if (bits <= 8 && i % 4 != 0) image.SetPalette(RandomPalette((1U << bits) + i % 4 - 2, random));
            SCOPED_TRACE(testing::Message() << image.GetShape() << " number " << i);
            EXPECT_EQ(Decoded(Saved(image), image), Shown(image));
        }
    }
}

TEST(PngSaver, KeepsDepthAndKind) {
    const auto kind = [](PixelFormat format, bool palette) {
        TestImage image({9, 2, format});
        if (palette) image.SetPalette(std::make_unique<ColorMap>(2));
        const Bytes file = Saved(image);
        const std::string text(file.begin(), file.end());
        return std::tuple(file[24], file[25], text.find("PLTE") != text.npos, text.find("tRNS") != text.npos);
    };
    for (const auto& [format, bits] :
         {std::pair(PixelFormat::Index1, 1), {PixelFormat::Index4, 4}, {PixelFormat::Index8, 8}}) {
        EXPECT_EQ(kind(format, true), std::tuple(bits, PNG_COLOR_TYPE_PALETTE, true, false));
        EXPECT_EQ(kind(format, false), std::tuple(bits, PNG_COLOR_TYPE_GRAY, false, false));
    }
    EXPECT_EQ(kind(PixelFormat::Bgr24, false), std::tuple(8, PNG_COLOR_TYPE_RGB, false, false));
    EXPECT_EQ(kind(PixelFormat::Bgra32Inverted, false), std::tuple(8, PNG_COLOR_TYPE_RGB_ALPHA, false, false));
}

TEST(PngSaver, RefusesWhatNoFileCanHoldAndLeavesTheFileAlone) {
    const std::string path = testing::TempDir() + "imageop_saver.png";
    const std::wstring widePath(path.begin(), path.end());
    const TestImage image({3, 2, PixelFormat::Bgr24});
    ASSERT_TRUE(CPNGSaver().Save(image, path));
    const Bytes before = ReadAll(path);
    TestImage hidden({3, 2, PixelFormat::Bgr24});
    hidden.HideMemory();
    const TestImage noWidth({0, 2, PixelFormat::Bgr24}), noHeight({3, 0, PixelFormat::Bgr24});
    const TestImage words({3, 2, PixelFormat::Rgb555}), greenWords({3, 2, PixelFormat::Rgb565});
    for (const auto& each : {std::cref<TestImage>(hidden), std::cref(noWidth), std::cref(noHeight), std::cref(words),
                             std::cref(greenWords)}) {
        SCOPED_TRACE(testing::Message() << each.get().GetShape());
        EXPECT_FALSE(CPNGSaver().Save(each, path));
        EXPECT_FALSE(CPNGSaver().Save(each, widePath));
        EXPECT_FALSE(CPNGSaver().Save(each, TempFile().Descriptor()));
    }
    EXPECT_EQ(ReadAll(path), before);
    EXPECT_TRUE(CPNGSaver().Save(TestImage({1, 1, PixelFormat::Index1}), widePath));
    EXPECT_LT(ReadAll(path).size(), before.size()) << "the longer file before is emptied";
    unlink(path.c_str());
    EXPECT_FALSE(CPNGSaver().Save(image, -1));
    EXPECT_FALSE(CPNGSaver().Save(image, FixturePath("no such folder/file.png")));
}

}  // namespace
}  // namespace vantu::test
