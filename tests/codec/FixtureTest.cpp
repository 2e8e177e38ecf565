// What the loaders make of the files in tests/data/codec, whole, cut and damaged.

#include <array>
#include <string_view>
#include <tuple>

#include "codec/Files.h"
#include "pixel/DynamicAccessor.h"
#include "support/Crc32.h"

namespace vantu::test {
namespace {

struct Fixture {
    std::string file;
    unsigned int width, height, bits;
    std::string crc;  // or "refused"
};

std::vector<Fixture> Fixtures() {
    std::ifstream in(FixturePath("expected.txt"));
    std::vector<Fixture> all;
    for (Fixture f; in >> f.file >> f.width >> f.height >> f.bits >> f.crc;) all.push_back(f);
    EXPECT_EQ(all.size(), 33U);
    return all;
}

std::string Crc32Text(const Bytes& bytes) {
    std::array<char, 9> text{};
    std::snprintf(text.data(), text.size(), "%08x", Crc32Of(bytes.data(), bytes.size()));
    return text.data();
}

/// Rows from the last one in memory, their spare bytes left out and their spare bits 0.
Bytes RowsFromLast(const IQorImage& image) {
    const unsigned int spareBits = (0U - image.GetWidth() * BitsPerPixel(image.GetPixelFormat())) & 7;
    const unsigned int stride = RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    const unsigned int rowBytes = RowStride(image.GetWidth(), image.GetPixelFormat(), 0);
    Bytes rows;
    for (unsigned int y = image.GetHeight(); y-- > 0;) {
        const unsigned char* const row = image.GetPixelData() + std::size_t{y} * stride;
        rows.insert(rows.end(), row, row + rowBytes);
        rows.back() = static_cast<unsigned char>(rows.back() >> spareBits << spareBits);
    }
    return rows;
}

/// The colours from the visual top left as blue, green, red.
Bytes Colors(const IQorImage& image) {
    const auto accessor = MakeConstAccessor(image);
    Bytes bytes;
    for (unsigned int y = 0; y < image.GetHeight(); ++y) {
        for (unsigned int x = 0; x < image.GetWidth(); ++x) {
            Color color;
            accessor->GetColor(*accessor, x, y, color);
            bytes.insert(bytes.end(), {color.GetBlue(), color.GetGreen(), color.GetRed()});
        }
    }
    return bytes;
}

TEST(Fixtures, LoadAsOtherDecodersSeeThem) {
    for (const auto& [file, width, height, bits, crc] : Fixtures()) {
        SCOPED_TRACE(file);
        LoadResult result{};
        const auto image = LoadWhy(Kind(file), FixturePath(file), nullptr, result);
        ASSERT_EQ(image == nullptr, crc == "refused");
        ASSERT_EQ(result, image ? LoadResult::Loaded : LoadResult::NotRead);
        const Shape told = SizeOf(Kind(file), MemoryFile(ReadAll(FixturePath(file))).Descriptor());
        EXPECT_EQ(told.width != 0, image || Kind(file) == "jpg");
        if (!image) continue;
        EXPECT_EQ(std::tuple(told.width, told.height, told.format),
                  std::tuple(image->GetWidth(), image->GetHeight(), image->GetPixelFormat()));
        const bool png = Kind(file) == "png";
        EXPECT_EQ(image->GetWidth(), width);
        EXPECT_EQ(image->GetHeight(), height);
        EXPECT_EQ(BitsPerPixel(image->GetPixelFormat()), bits);
        EXPECT_NE(image->GetPixelFormat(), PixelFormat::Rgb565);
        EXPECT_EQ(image->GetAlignment(), 4);
        EXPECT_EQ(image->IsBottomUp(), !png);
        // A PNG lies bottom row first although its image says otherwise.
        EXPECT_EQ(Crc32Text(png || Kind(file) == "jpg" ? RowsFromLast(*image) : Colors(*image)), crc);

        TestFactory factory;
        const auto made = LoadFrom(Kind(file), MemoryFile(ReadAll(FixturePath(file))).Descriptor(), &factory);
        ASSERT_EQ(made, factory.last);
        EXPECT_EQ(made->IsBottomUp(), !png);
        EXPECT_EQ(RowsFromLast(*made), RowsFromLast(*image));
        EXPECT_TRUE(factory.last->GuardsIntact());
    }
}

/// Refuses what a damaged header makes enormous.
class CarefulFactory : public TestFactory {
public:
    ImagePtr CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                         void** memory) override {
        last.reset();
        if (std::uint64_t{width} * height > 1U << 18) return nullptr;
        return TestFactory::CreateImage(width, height, format, bottomUp, memory);
    }
};

void LoadSafely(const std::string& kind, const Bytes& bytes) {
    const MemoryFile file(bytes);
    CarefulFactory factory;
    const auto image = LoadFrom(kind, file.Descriptor(), &factory);
    if (factory.last) {
        EXPECT_TRUE(factory.last->GuardsIntact());
    }
    unsigned int width = 0;
    unsigned int height = 0;
    PixelFormat format{};
    QorSeekFile(file.Descriptor(), 0, 0);
    if (kind == "jpg" && image) {
        EXPECT_TRUE(CJPEGLoader().GetImageSize(file.Descriptor(), width, height, format));
    }
}

TEST(Fixtures, CutAndDamagedFilesDoNoHarmAndStaySilent) {
    Random random(20);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    for (const auto& fixture : Fixtures()) {
        SCOPED_TRACE(fixture.file);
        const Bytes whole = ReadAll(FixturePath(fixture.file));
        const std::string kind = Kind(fixture.file);
        for (std::size_t size = 0; size < whole.size(); size += size < 100 ? 1 : 11) {
            LoadSafely(kind, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        }
        for (int i = 0; i < 100; ++i) {
            Bytes damaged = whole;
            // The headers are where a byte matters most.
            const std::size_t end = i % 2 == 0 ? std::min<std::size_t>(whole.size(), 120) : whole.size();
            damaged[random() % end] = static_cast<unsigned char>(random());
            LoadSafely(kind, damaged);
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace vantu::test
