// Sizes at the ends of their ranges: nothing, one pixel, long rows, many ranges, many groups, headers that claim much.

#include <vantu/CDIBSaver.h>
#include <vantu/CQorImage.h>
#include <vantu/ImageUtil.h>

#include <cstring>

#include "blend/Scene.h"
#include "codec/Files.h"
#include "faults/FailingMemory.h"
#include "faults/FaultyFile.h"
#include "faults/SparseImage.h"
#include "support/Crc32.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

ImagePtr Turned(const IQorImage& image, int way, IGraphicsFactory* factory = nullptr) {
    return way < 0 ? ImageUtil::Rotate(image, way, factory, nullptr)
                   : ImageUtil::Flip(image, way == 1, way == 2, factory, nullptr);
}

TEST(Extremes, ImagesOfNoPixels) {
    Random random(81);
    for (const PixelFormat format : kPixelFormats) {
        for (const auto& [width, height] : {std::pair{0U, 0U}, {0U, 7U}, {7U, 0U}}) {
            for (const bool bottomUp : {false, true}) {
                for (const bool hollow : {false, true}) {
                    const Shape shape{width, height, format, 4, bottomUp};
                    SCOPED_TRACE(testing::Message() << shape << (hollow ? " hollow" : ""));
                    const auto image = std::make_shared<TestImage>(shape);
                    if (hollow) image->HideMemory();
                    for (const int way : {-3, -2, -1, 0, 1, 2}) {
                        const auto made = Turned(*image, way);
                        ASSERT_TRUE(made);
                        const bool upright = way == -2 || way >= 0;
                        EXPECT_EQ(made->GetWidth(), upright ? width : height);
                        EXPECT_EQ(made->GetHeight(), upright ? height : width);
                    }
                    const Range<int, 2> none{0, 0, 0, 0};
                    EXPECT_TRUE(ImageUtil::ClearIndex(*image, 1, {1, 0, 0, 0}));
                    EXPECT_TRUE(ImageUtil::ClearIndex(*image, 1, none));
                    EXPECT_TRUE(ImageUtil::Clear(*image, Color(0), {1, 0, 0, 0}));
                    EXPECT_EQ(ImageUtil::ClearPixelAlpha(*image, 1, none), BitsPerPixel(format) == 32);
                    EXPECT_TRUE(ImageUtil::Copy(*image, none, *image, {0, 0}));
                    TheFile() = {};
                    EXPECT_TRUE(CDIBSaver().Save(*image, std::string("file")));
                    EXPECT_EQ(TheFile().bytes.size(), 54U);

                    const auto source = std::make_shared<TestImage>(Shape{2, 2, Bgr24}, random);
                    const auto transfer = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Alpha);
                    EXPECT_TRUE(Paint(
                        *BlenderOn(source),
                        {.source = source, .coverage = Cover({{0, 0, 2, 2}}), .mask = image, .transfer = transfer}))
                        << "a mask of no pixels is missed by every range";
                    const auto blender = BlenderOn(image);
                    EXPECT_TRUE(blender->BeginGroup(image, nullptr, false, false, false));
                    EXPECT_FALSE(blender->EndGroup());
                    EXPECT_EQ(Paint(*blender, {source, Cover({none})}), !hollow);
                    EXPECT_TRUE(image->GuardsIntact());
                }
            }
        }
    }
}

TEST(Extremes, OnePixel) {
    Random random(82);
    for (const PixelFormat format : kPixelFormats) {
        for (const bool bottomUp : {false, true}) {
            const auto image = std::make_shared<TestImage>(Shape{1, 1, format, 1, bottomUp}, random);
            SCOPED_TRACE(testing::Message() << image->GetShape());
            for (const int way : {-3, -2, -1, 0, 1, 2}) {
                if (way == 1 && BitsPerPixel(format) < 8) continue;  // looks behind the row's last pixel
                EXPECT_EQ(ValueAt(*Turned(*image, way), 0, 0), ValueAt(*image, 0, 0)) << way;
            }
            if (BitsPerPixel(format) >= 8) {
                EXPECT_TRUE(ImageUtil::ClearIndex(*image, 0, {0, 0, 1, 1}));
                EXPECT_EQ(ValueAt(*image, 0, 0), 0U);
            }
            EXPECT_TRUE(Paint(*BlenderOn(image), {Row(Bgr24, {255, 255, 255}), Cover({{0, 0, 1, 1}})}));
            EXPECT_TRUE(BitsPerPixel(format) < 8 || (ValueAt(*image, 0, 0) != 0) == (BitsPerPixel(format) > 8));
            EXPECT_TRUE(image->GuardsIntact());
        }
    }
}

TEST(Extremes, ARowOfAMillionPixels) {
    constexpr int kLong = 1'000'000, kTile = 997;
    Random random(83);
    for (const PixelFormat format : {Rgb555, Bgr24, Bgra32Premultiplied, Bgra32Inverted}) {
        const Shape shape{kLong, 1, format, 4, true};
        const auto source = std::make_shared<TestImage>(shape, random);
        const auto mask = std::make_shared<TestImage>(Shape{kLong, 1, Index8}, random);
        mask->SetPalette(RandomPalette(256, random));
        Call call{.source = source,
                  .mask = mask,
                  .transfer = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Luminosity),
                  .alpha = 201,
                  .mode = BlendMode::Overlay};
        std::vector<Bytes> painted;
        for (const int step : {kLong, kTile}) {
            Random same(84);
            const auto image = std::make_shared<TestImage>(shape, same);
            const auto blender = BlenderOn(image);
            for (int x = 0; x < kLong; x += step) {
                call.coverage = Cover({{x, 0, std::min(kLong, x + step), 1}});
                EXPECT_TRUE(Paint(*blender, call));
            }
            painted.push_back(image->Bytes());
        }
        EXPECT_EQ(painted[0], painted[1]) << "at once and by tiles";
        const auto turned = Turned(*Turned(*source, -1), -3);
        EXPECT_EQ(std::memcmp(turned->GetPixelData(), source->GetPixelData(), source->Size()), 0);
        const auto flipped = Turned(*Turned(*source, 1), 1);
        EXPECT_EQ(std::memcmp(flipped->GetPixelData(), source->GetPixelData(), source->Size()), 0);
    }
}

TEST(Extremes, RowsThatWrapIn32BitsWriteNothingPastTheirBlock) {
    // By the contract a row of 2^27 + 1 pixels of 32 bits takes up 4 bytes.
    constexpr unsigned int kWraps = (1U << 27) + 1;
    static_assert(RowStride(kWraps, Bgra32, 4) == 4);
    TestImage wide({kWraps, 3, Bgra32});
    TestFactory factory;
    for (const int way : {-2, 1, 2}) EXPECT_FALSE(Turned(wide, way, &factory));
    EXPECT_TRUE(Turned(wide, 0, &factory)) << "a clone moves bytes, not pixels";
    EXPECT_TRUE(ImageUtil::ClearIndex(wide, 0x01010101, {1, 0, 0, 0}));
    EXPECT_TRUE(ImageUtil::ClearIndex(wide, 0x02020202, {0, 0, static_cast<int>(kWraps), 3}));
    EXPECT_TRUE(ImageUtil::ClearPixelAlpha(wide, 3, {0, 0, static_cast<int>(kWraps), 3}));
    EXPECT_EQ(wide.Bytes(), (Bytes{2, 2, 2, 3, 2, 2, 2, 3, 2, 2, 2, 3}));
    EXPECT_TRUE(wide.GuardsIntact());
    // A column of that many pixels is sound; a quarter turn would make it such a row.
    const SparseImage column({1, kWraps, Bgra32});
    if (column.GetPixelData() == nullptr) GTEST_SKIP() << "no address space";
    for (const int way : {-1, -3}) {
        EXPECT_FALSE(Turned(column, way, &factory));
        EXPECT_TRUE(factory.last->GuardsIntact());
    }
    const auto low = std::make_shared<SparseImage>(Shape{1, 0x80000010, Index8, 1, true});
    if (std::as_const(*low).GetPixelData() == nullptr) GTEST_SKIP() << "no address space";
    EXPECT_TRUE(ImageUtil::ClearIndex(*low, 9, {0, 5, 1, 6}));
    EXPECT_EQ(low->GetPixelData()[0x80000010 - 6], 9);
}

TEST(Extremes, TenThousandRanges) {
    constexpr int kCount = 10'000, kColumns = 100;
    const auto pixels = IPDFImageBlender::CreateCoverage();
    for (int i = 0; i < kCount; ++i) {
        const int x = i % kColumns * 2, y = i / kColumns * 2;
        pixels->AddRange({x, y, x + 1, y + 1});
    }
    ASSERT_EQ(pixels->GetRanges().size(), std::size_t{kCount});
    Random random(86);
    const Shape shape{2 * kColumns, 2 * kColumns, Bgra32Premultiplied};
    const auto image = std::make_shared<TestImage>(shape);
    std::memset(image->GetPixelData(), 0, image->Size());
    const auto source = std::make_shared<TestImage>(shape, random);
    ImageUtil::ClearPixelAlpha(*source, 255, {1, 0, 0, 0});
    const auto blender = BlenderOn(nullptr);
    std::shared_ptr<Coverage> blended;
    EXPECT_TRUE(blender->BeginGroup(image, nullptr, false, false, false));
    EXPECT_TRUE(Paint(*blender, {source, pixels}, blended));
    EXPECT_EQ(blended->GetRanges().size(), std::size_t{kCount});
    EXPECT_TRUE(blender->EndGroup());
    for (unsigned int y = 0; y < shape.height; ++y) {
        for (unsigned int x = 0; x < shape.width; ++x) {
            const bool painted = x % 2 == 0 && y % 2 == 0;
            ASSERT_EQ(ValueAt(*image, x, y), painted ? ValueAt(*source, x, y) : 0U) << x << ' ' << y;
        }
    }
    pixels->AddRange({0, 0, 2 * kColumns, 2 * kColumns});
    EXPECT_EQ(pixels->GetRanges().size(), 1U);
}

TEST(Extremes, TenThousandGroups) {
    constexpr unsigned int kDepth = 10'000;
    const auto page = Row(Bgra32Premultiplied, {0, 0, 0, 0});
    const auto blender = BlenderOn(page);
    std::vector<std::shared_ptr<TestImage>> images;
    const auto pixel = Cover({{0, 0, 1, 1}});
    for (unsigned int i = 0; i < kDepth; ++i) {
        images.push_back(Row(Bgra32Premultiplied, {0, 0, 0, 0}));
        EXPECT_TRUE(blender->BeginGroup(images.back(), nullptr, i % 2 == 0, false, i % 3 == 0));
    }
    EXPECT_TRUE(Paint(*blender, {Row(Bgr24, {1, 2, 3}), pixel}));
    while (!images.empty()) {
        EXPECT_TRUE(blender->EndGroup());
        EXPECT_TRUE(Paint(*blender, {images.back(), pixel}));
        images.pop_back();
    }
    EXPECT_FALSE(blender->EndGroup());
    EXPECT_EQ(page->Bytes(), (Bytes{1, 2, 3, 255})) << "an opaque pixel comes up unchanged";
    for (unsigned int i = 0; i < kDepth; ++i) blender->BeginGroup(page, nullptr, false, false, false);
}

/// Notes what is asked for and makes nothing.
struct NotingFactory : IGraphicsFactory {
    ImagePtr CreateImage(unsigned int w, unsigned int h, PixelFormat, bool, void**) override {
        width = w;
        height = h;
        return nullptr;
    }
    unsigned int width = 0;
    unsigned int height = 0;
};

TEST(Extremes, HeadersThatClaimMoreThanThereIs) {
    constexpr std::size_t kMachine = std::size_t{1} << 32;
    constexpr unsigned int kMost = 0x80000000;
    const auto dib = [](unsigned int width, unsigned int height) {
        Bytes file = ReadAll(FixturePath("bits24.bmp"));
        std::memcpy(&file[18], &width, 4);
        std::memcpy(&file[22], &height, 4);
        return file;
    };
    const auto png = [](unsigned int width, unsigned int height) {
        Bytes file = ReadAll(FixturePath("rgb8.png"));
        const auto put = [&](std::size_t at, unsigned int value) {
            for (std::size_t i = 0; i < 4; ++i) file[at + i] = static_cast<unsigned char>(value >> 8 * (3 - i));
        };
        put(16, width);
        put(20, height);
        put(29, Crc32(&file[12], 17));
        return file;
    };
    const auto jpeg = [](unsigned int width, unsigned int height) {
        Bytes file = ReadAll(FixturePath("baseline.jpg"));
        const Bytes frame{0xFF, 0xC0, 0x00, 0x11};
        const auto at = std::search(file.begin(), file.end(), frame.begin(), frame.end());
        const unsigned int size[] = {height >> 8, height, width >> 8, width};
        std::ranges::transform(size, at + 5, [](unsigned int byte) { return static_cast<unsigned char>(byte); });
        return file;
    };
    enum class Ends { Refused, OutOfMemory };
    const struct {
        const char* name;
        unsigned int width, height;
        Bytes file;
        Ends ends;
    } cases[] = {
        {"x.bmp", kMost, kMost, dib(kMost, kMost), Ends::OutOfMemory},
        {"x.bmp", kMost - 1, kMost, dib(kMost - 1, kMost), Ends::OutOfMemory},
        {"x.bmp", 65536, 65536, dib(65536, 65536), Ends::OutOfMemory},
        {"x.png", kMost - 1, kMost - 1, png(kMost - 1, kMost - 1), Ends::Refused},
        {"x.png", 1'000'000, 1'000'000, png(1'000'000, 1'000'000), Ends::OutOfMemory},
        {"x.png", 0, 5, png(0, 5), Ends::Refused},
        {"x.jpg", 65535, 65535, jpeg(65535, 65535), Ends::Refused},
        {"x.jpg", 65500, 65500, jpeg(65500, 65500), Ends::OutOfMemory},
        {"x.jpg", 0, 5, jpeg(0, 5), Ends::Refused},
    };
    for (const auto& [name, width, height, file, ends] : cases) {
        SCOPED_TRACE(testing::Message() << name << ' ' << width << 'x' << height);
        TheFile() = {.bytes = file};
        NotingFactory factory;
        EXPECT_FALSE(LoadPath(Kind(name), std::string(name), &factory));
        EXPECT_TRUE(ends == Ends::Refused ? factory.width == 0 : factory.width == width && factory.height == height);
        const MemoryLimit machine(kMachine);
        if (ends == Ends::OutOfMemory) {
            EXPECT_THROW(static_cast<void>(LoadPath(Kind(name), std::string(name), nullptr)), std::bad_alloc);
        } else {
            EXPECT_FALSE(LoadPath(Kind(name), std::string(name), nullptr));
        }
        EXPECT_EQ(TheFile().open, 0);
        EXPECT_LT(TheFile().moved, file.size() * 2 + 1) << "nothing is read for it";
    }
}

}  // namespace
}  // namespace vantu::test
