// Sizes at the ends of their ranges: no pixels, rows that wrap in 32 bits, headers that claim much.

#include <vantu/CDIBSaver.h>
#include <vantu/CQorImage.h>
#include <vantu/ImageUtil.h>

#include <cstring>

#include "blend/Painting.h"
#include "codec/Files.h"
#include "faults/FailingMemory.h"
#include "faults/FaultyFile.h"
#include "faults/SparseImage.h"

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

TEST(Extremes, RowsThatWrapIn32BitsWriteNothingPastTheirBlock) {
    // By the contract a row of 2^27 + 1 pixels of 32 bits takes up 4 bytes.
    constexpr unsigned int kWraps = (1U << 27) + 1;
    static_assert(RowStride(kWraps, Bgra32, 4) == 4);
    TestImage wide({kWraps, 3, Bgra32});
    TestFactory factory;
    for (const int way : {-2, 1, 2}) EXPECT_FALSE(Turned(wide, way, &factory));
    TestFactory oneRow;
    oneRow.rowsLeftOut = kWraps - 1;
    for (const int way : {-1, -3}) EXPECT_FALSE(Turned(wide, way, &oneRow));
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
    enum class Ends { Refused, OutOfMemory };
    const struct {
        std::string name, edits;
        unsigned int width, height;
        Ends ends;
    } cases[] = {
        {"bits24.bmp", "18=0000008000000080", kMost, kMost, Ends::OutOfMemory},
        {"bits24.bmp", "18=FFFFFF7F00000080", kMost - 1, kMost, Ends::OutOfMemory},
        {"bits24.bmp", "18=0000010000000100", 65536, 65536, Ends::OutOfMemory},
        {"rgb8.png", "16=7FFFFFFF7FFFFFFF 29#12", kMost - 1, kMost - 1, Ends::Refused},
        {"rgb8.png", "16=000F4240000F4240 29#12", 1'000'000, 1'000'000, Ends::OutOfMemory},
        {"rgb8.png", "16=0000000000000005 29#12", 0, 5, Ends::Refused},
        {"baseline.jpg", "163=FFFFFFFF", 65535, 65535, Ends::Refused},
        {"baseline.jpg", "163=FFDCFFDC", 65500, 65500, Ends::OutOfMemory},
        {"baseline.jpg", "163=00050000", 0, 5, Ends::Refused},
    };
    for (const auto& [name, edits, width, height, ends] : cases) {
        SCOPED_TRACE(testing::Message() << name << ' ' << width << 'x' << height);
        TheFile() = {.bytes = Edited(name, edits)};
        NotingFactory factory;
        EXPECT_FALSE(LoadPath(Kind(name), name, &factory));
        EXPECT_TRUE(ends == Ends::Refused ? factory.width == 0 : factory.width == width && factory.height == height);
        const MemoryLimit machine(kMachine);
        if (ends == Ends::OutOfMemory) {
            EXPECT_THROW(static_cast<void>(LoadPath(Kind(name), name, nullptr)), std::bad_alloc);
        } else {
            EXPECT_FALSE(LoadPath(Kind(name), name, nullptr));
        }
        EXPECT_EQ(TheFile().open, 0);
        EXPECT_LE(TheFile().moved, TheFile().bytes.size() * 2) << "nothing is read for it";
    }
}

}  // namespace
}  // namespace vantu::test
