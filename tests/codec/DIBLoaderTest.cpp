#include <vantu/CQorImage.h>

#include <limits>

#include "codec/Files.h"

namespace vantu::test {
namespace {

/// The parts of a bitmap file, for files that no tool writes.
struct Dib {
    unsigned int bits = 24;
    int width = 1;
    int height = 3;
    unsigned int colorsUsed = 0;
    unsigned int rowOffset = 0;
    Bytes tail{};  // palette, gap and rows
    unsigned int headerSize = 40;
    unsigned int compression = 0;

    [[nodiscard]] Bytes Encode() const {
        Bytes bytes;
        const auto put = [&](unsigned int value, unsigned int size) {
            for (; size > 0; --size, value >>= 8) bytes.push_back(static_cast<unsigned char>(value));
        };
        put(0x4D42, 2);
        for (const unsigned int value : {~0U, ~0U, rowOffset, headerSize}) put(value, 4);
        put(static_cast<unsigned int>(width), 4);
        put(static_cast<unsigned int>(height), 4);
        put(7, 2);
        put(bits, 2);
        for (const unsigned int value : {compression, ~0U, ~0U, ~0U, colorsUsed, ~0U}) put(value, 4);
        bytes.insert(bytes.end(), tail.begin(), tail.end());
        return bytes;
    }
    [[nodiscard]] ImagePtr Load(IGraphicsFactory* factory = nullptr) const {
        return LoadFrom("bmp", TempFile(Encode()).Descriptor(), factory);
    }
};

const Bytes kRows = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};  // three rows of one 24-bit pixel and a spare byte

Bytes Block(const IQorImage& image) {
    const unsigned char* const data = image.GetPixelData();
    return Bytes(data,
                 data + RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment()) * image.GetHeight());
}

Bytes Join(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(DibLoader, RowOrder) {
    const auto upward = Dib{.tail = kRows}.Load();
    EXPECT_TRUE(upward->IsBottomUp());
    EXPECT_EQ(Block(*upward), kRows);
    const Dib topDown{.height = -3, .tail = kRows};
    EXPECT_FALSE(topDown.Load()->IsBottomUp());
    EXPECT_EQ(Block(*topDown.Load()), kRows);
    TestFactory factory;
    const auto turned = topDown.Load(&factory);
    EXPECT_TRUE(turned->IsBottomUp());
    EXPECT_EQ(Block(*turned), (Bytes{9, 10, 11, 4, 5, 6, 7, 8, 1, 2, 3, 12})) << "spare bytes stay";
    const auto flat = Dib{.height = 0}.Load();
    EXPECT_EQ(flat->GetHeight(), 0U);
    EXPECT_FALSE(flat->IsBottomUp());
}

TEST(DibLoader, FindsTheRows) {
    const Bytes gap(5, 0xEE);
    EXPECT_EQ(Block(*Dib{.rowOffset = 59, .tail = Join(gap, kRows)}.Load()), kRows);
    EXPECT_EQ(Block(*Dib{.rowOffset = 54, .tail = kRows}.Load()), kRows);
    EXPECT_EQ(Block(*Dib{.colorsUsed = 2, .tail = Join(Bytes(8), kRows)}.Load()), kRows) << "an idle palette";
    EXPECT_EQ(Block(*Dib{.bits = 16, .width = 2, .tail = kRows}.Load()), kRows) << "16 bits have none by default";
    EXPECT_EQ(Block(*Dib{.tail = Bytes(kRows.begin(), kRows.begin() + 5)}.Load()),
              (Bytes{1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 0, 0}));

    const Bytes file = Dib{.rowOffset = 1000, .tail = kRows}.Encode();
    const TempFile headless(Bytes(file.begin() + 14, file.end()));
    lseek(headless.Descriptor(), 20, SEEK_SET);
    EXPECT_EQ(Block(*CDIBLoader().Load(headless.Descriptor(), nullptr, true)), kRows) << "from the file's start";
    EXPECT_FALSE(CDIBLoader().Load(headless.Descriptor(), nullptr, false));
    EXPECT_FALSE(CDIBLoader().Load(TempFile(file).Descriptor(), nullptr, true));
}

TEST(DibLoader, PaletteEntries) {
    const Bytes entries = {10, 20, 30, 99, 40, 50, 60, 0};
    const auto entry = [](const IQorImage& image, unsigned int i) {
        const Color color = (*image.GetPalette())[i];
        return Bytes{color.GetRed(), color.GetGreen(), color.GetBlue(), color.GetAlpha()};
    };
    for (const unsigned int used : {2U, 0x70002U}) {
        const auto image = Dib{.bits = 8, .height = 1, .colorsUsed = used, .tail = Join(entries, {1, 2, 3, 4})}.Load();
        EXPECT_EQ(entry(*image, 0), (Bytes{30, 20, 10, 255}));
        EXPECT_EQ(entry(*image, 1), (Bytes{60, 50, 40, 255}));
        EXPECT_EQ(entry(*image, 2), (Bytes{2, 2, 2, 255})) << "as the image was born";
        EXPECT_EQ(Block(*image), (Bytes{1, 2, 3, 4}));
    }
    for (const unsigned int used : {0U, 0x10000U}) {
        const auto image = Dib{.bits = 1, .height = 1, .colorsUsed = used, .tail = Join(entries, {9, 8, 7, 6})}.Load();
        EXPECT_EQ(entry(*image, 1), (Bytes{60, 50, 40, 255}));
        EXPECT_EQ(Block(*image), (Bytes{9, 8, 7, 6}));
    }
    const auto cut = Dib{.bits = 4, .height = 1, .tail = Bytes{1, 2}}.Load();
    EXPECT_EQ(entry(*cut, 0), (Bytes{0, 2, 1, 255}));
    EXPECT_EQ(entry(*cut, 15), (Bytes{0, 0, 0, 255}));
    const auto large = Dib{.bits = 1, .height = 1, .colorsUsed = 0xFFFF, .tail = Bytes(0xFFFFU * 4, 5)}.Load();
    EXPECT_EQ(large->GetPalette()->GetSize(), 2U) << "a map is never grown";
}

TEST(DibLoader, Refusals) {
    for (const unsigned int bits : {0U, 2U, 15U, 33U, 64U, 0x118U}) EXPECT_FALSE(Dib{.bits = bits}.Load()) << bits;
    for (const unsigned int compression : {1U, 2U, 3U, 4U, ~0U}) EXPECT_FALSE(Dib{.compression = compression}.Load());
    EXPECT_FALSE(Dib{.headerSize = 12}.Load());
    EXPECT_TRUE(Dib{.headerSize = 124}.Load()) << "other sizes are taken for 40";
    Bytes bytes = Dib{}.Encode();
    EXPECT_TRUE(LoadFrom("bmp", TempFile(bytes).Descriptor(), nullptr));
    bytes[1] = 'A';
    EXPECT_FALSE(LoadFrom("bmp", TempFile(bytes).Descriptor(), nullptr));
    bytes[1] = 'M';
    bytes.pop_back();
    EXPECT_FALSE(LoadFrom("bmp", TempFile(bytes).Descriptor(), nullptr));
}

/// Makes a small image, whatever is asked for, and notes what was.
class SmallFactory : public IGraphicsFactory {
public:
    ImagePtr CreateImage(unsigned int w, unsigned int h, PixelFormat format, bool bottomUp, void**) override {
        width = w;
        height = h;
        last = std::make_shared<TestImage>(Shape{2, 2, format, 1, bottomUp});
        return last;
    }
    unsigned int width = 0;
    unsigned int height = 0;
    std::shared_ptr<TestImage> last;
};

TEST(DibLoader, ExtremeSizesStayInsideTheImage) {
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    SmallFactory factory;
    for (const int width : {kLeast, -1, 0, 3, kMost}) {
        for (const int height : {kLeast, -5, 0, 3, kMost}) {
            for (const unsigned int bits : {1U, 8U, 24U, 32U}) {
                EXPECT_TRUE(
                    (Dib{.bits = bits, .width = width, .height = height, .tail = Bytes(3000, 7)}.Load(&factory)));
                EXPECT_TRUE(factory.last->GuardsIntact()) << width << 'x' << height << ' ' << bits;
                EXPECT_EQ(factory.width, static_cast<unsigned int>(width));
                EXPECT_EQ(factory.height, height < 0 ? 0U - static_cast<unsigned int>(height) : height);
            }
        }
    }
    EXPECT_THROW(static_cast<void>(Dib{.width = -1}.Load()), std::bad_alloc);
}

}  // namespace
}  // namespace vantu::test
