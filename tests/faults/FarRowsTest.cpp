// Blocks beyond 4 GiB: rows are found by 64-bit addresses, and what a file says in 32 bits is kept to.

#include <vantu/CDIBSaver.h>
#include <vantu/ImageUtil.h>

#include <cstring>
#include <span>

#include "blend/Painting.h"
#include "codec/Files.h"
#include "faults/FaultyFile.h"
#include "faults/SparseImage.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

// Row 32768 of this image begins 4 GiB into its block: what counts in 32 bits lands in row 0 or 1.
constexpr Shape kHuge{32768, 32770, Bgra32Premultiplied};
constexpr std::size_t kHugeStride = 32768 * 4;

/// A huge image of either row order, the y of the row that lies last in memory, and that row and its alias in memory.
struct Huge {
    explicit Huge(bool bottomUp)
        : image(std::make_shared<SparseImage>(Shape{kHuge.width, kHuge.height, kHuge.format, 4, bottomUp})),
          y(bottomUp ? 0 : static_cast<int>(kHuge.height) - 1) {}

    [[nodiscard]] bool Exists() const { return std::as_const(*image).GetPixelData() != nullptr; }
    [[nodiscard]] unsigned char* Last() const { return image->GetPixelData() + kHugeStride * (kHuge.height - 1); }
    [[nodiscard]] bool AliasIsClear() const {
        const unsigned char* const alias = Last() - (std::size_t{1} << 32);
        return std::all_of(alias, alias + 4096, [](unsigned char byte) { return byte == 0; });
    }

    std::shared_ptr<SparseImage> image;
    int y;
};

class FarRows : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (!huge.Exists()) GTEST_SKIP() << "no address space for a block of 4 GiB";
    }
    Bytes LastRow(std::size_t size) const { return Bytes(huge.Last(), huge.Last() + size); }

    Huge huge{GetParam()};
    Random random{85};
};

constexpr int kWidth = 300;

TEST_P(FarRows, ArePaintedAndPaintWhereTheyLie) {
    const auto host = std::make_shared<HostFunction>([](const Color&) { return 1.0; });
    const auto source = std::make_shared<TestImage>(Shape{kWidth, 1, Bgra32Premultiplied}, random);
    ImageUtil::ClearPixelAlpha(*source, 255, {1, 0, 0, 0});
    const Range<int, 2> where{7, huge.y, 7 + kWidth, huge.y + 1};
    const auto mask = std::make_shared<TestImage>(Shape{kWidth, 1, Index8}, random);
    for (const bool inOrder : {false, true}) {
        std::memset(huge.Last(), 0, 4096);
        // With a mask the offset moves the target: the range is the source's place.
        const Call call = inOrder ? Call{.source = source,
                                         .coverage = Cover({{0, 0, kWidth, 1}}),
                                         .offset = {7, huge.y},
                                         .mask = mask,
                                         .transfer = host}
                                  : Call{.source = source, .coverage = Cover({where}), .offset = {-7, -huge.y}};
        EXPECT_TRUE(Paint(*BlenderOn(huge.image), call));
        EXPECT_TRUE(std::ranges::equal(source->Bytes(), std::span(huge.Last() + 28, kWidth * 4)));

        const auto target = std::make_shared<TestImage>(source->GetShape());
        std::memset(target->GetPixelData(), 0, target->Size());
        const Call back =
            inOrder ? Call{.source = huge.image,
                           .coverage = Cover({where}),
                           .offset = {-7, -huge.y},
                           .mask = std::make_shared<TestImage>(Shape{kWidth + 7, kHuge.height, Index1}),
                           .transfer = host}
                    : Call{.source = huge.image, .coverage = Cover({{0, 0, kWidth, 1}}), .offset = {7, huge.y}};
        EXPECT_TRUE(Paint(*BlenderOn(target), back));
        EXPECT_EQ(target->Bytes(), source->Bytes());
    }
    EXPECT_TRUE(huge.AliasIsClear());
}

TEST_P(FarRows, AreReadAsMasks) {
    const auto function = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Alpha);
    const auto host = std::make_shared<HostFunction>([](const Color& color) { return color.GetAlpha() / 255.0; });
    for (int x = 0; x < kWidth; ++x) huge.Last()[4 * x + 3] = static_cast<unsigned char>(x % 2 * 255);
    for (const std::shared_ptr<IPDFTransferFunction>& transfer :
         {std::shared_ptr<IPDFTransferFunction>(function), std::shared_ptr<IPDFTransferFunction>(host)}) {
        const auto target = std::make_shared<TestImage>(Shape{kWidth, 1, Bgr24});
        EXPECT_TRUE(Paint(*BlenderOn(target), {.source = std::make_shared<TestImage>(Shape{kWidth, 1, Bgr24}, random),
                                               .coverage = Cover({{0, 0, kWidth, 1}}),
                                               .mask = huge.image,
                                               .transfer = transfer,
                                               .maskOffset = {0, -huge.y},
                                               .mode = BlendMode::Difference}));
        const Bytes bytes = target->Bytes();
        for (std::size_t x = 0; x < kWidth; x += 2) {
            EXPECT_TRUE(bytes[3 * x] == TestImage::kFreshByte && bytes[3 * x + 2] == TestImage::kFreshByte);
        }
        EXPECT_NE(bytes, TestImage(target->GetShape()).Bytes());
    }
}

TEST_P(FarRows, AreClearedAndCopiedWhereTheyLie) {
    const Range<int, 2> where{3, huge.y, 3 + kWidth, huge.y + 1};
    EXPECT_TRUE(ImageUtil::Clear(*huge.image, Color(0xFF0A0B0C), where));
    EXPECT_EQ(LastRow(16), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0C, 0x0B, 0x0A, 0xFF}));
    EXPECT_TRUE(ImageUtil::ClearPixelAlpha(*huge.image, 77, where));
    EXPECT_EQ(huge.Last()[4 * (2 + kWidth) + 3], 77);
    TestImage target({kWidth, 1, Bgra32Premultiplied});
    EXPECT_TRUE(ImageUtil::Copy(*huge.image, where, target, {0, 0}));
    EXPECT_TRUE(std::ranges::equal(target.Bytes(), std::span(huge.Last() + 12, kWidth * 4)));
    EXPECT_TRUE(ImageUtil::ClearIndex(*huge.image, 0x01020304, where));
    EXPECT_EQ(huge.Last()[12], 1);
    EXPECT_TRUE(huge.AliasIsClear());
}

TEST_P(FarRows, AreSavedByTheirCountIn32Bits) {
    TheFile() = {.hollow = true};
    EXPECT_TRUE(CDIBSaver().Save(*huge.image, std::string("file")));
    EXPECT_EQ(TheFile().moved, 54 + 2 * kHugeStride) << "as many bytes as the header can say";
}

INSTANTIATE_TEST_SUITE_P(Huge, FarRows, testing::Bool(),
                         [](const auto& info) { return std::string(info.param ? "BottomUp" : "TopDown"); });

TEST(FarFile, OfFourGibibytesIsReadToItsEnd) {
    struct Factory : IGraphicsFactory {
        ImagePtr CreateImage(unsigned int, unsigned int, PixelFormat, bool, void**) override { return image; }
        ImagePtr image;
    } factory;
    const Huge huge(true);
    if (!huge.Exists()) GTEST_SKIP() << "no address space for a block of 4 GiB";
    factory.image = huge.image;
    TheFile() = {};
    EXPECT_TRUE(CDIBSaver().Save(TestImage({0, 0, kHuge.format}), std::string("file")));
    std::memcpy(&TheFile().bytes[18], &kHuge.width, 4);
    std::memcpy(&TheFile().bytes[22], &kHuge.height, 4);
    TheFile().hollow = true;  // no byte of the rows is moved
    TheFile().moved = 0;
    EXPECT_EQ(CDIBLoader(&factory).Load(std::string("file"), nullptr), huge.image);
    EXPECT_EQ(TheFile().moved, 54 + huge.image->Size());
}

TEST(FarStencil, IsReadToTheEndOfItsBlockAndNoFurther) {
    // 2^18 pixels in 32768 bytes a row: row 131072 begins at 4 GiB.
    for (const bool bottomUp : {false, true}) {
        constexpr int kRows = 131074, kCount = 304;
        const auto mask = std::make_shared<SparseImage>(Shape{1U << 18, kRows, Index1, 4, bottomUp});
        if (std::as_const(*mask).GetPixelData() == nullptr) GTEST_SKIP() << "no address space";
        std::memset(mask->GetPixelData() + std::size_t{32768} * (kRows - 1), 0x55, 32768);
        const auto image = std::make_shared<TestImage>(Shape{kCount, 1, Bgr24}), source = Row(Bgr24, Bytes(3 * kCount));
        EXPECT_TRUE(Paint(*BlenderOn(image), {.source = source,
                                              .coverage = Cover({{0, 0, kCount, 1}}),
                                              .mask = mask,
                                              .maskOffset = {kCount - (1 << 18), bottomUp ? 0 : 1 - kRows}}));
        for (std::size_t x = 0; x < kCount; ++x) ASSERT_EQ(image->Bytes()[3 * x], x % 2 == 0 ? 0 : 0xCD) << x;
    }
}

}  // namespace
}  // namespace vantu::test
