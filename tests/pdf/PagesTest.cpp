#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "PagePainter.h"
#include "support/VectorTargets.h"

// The host paints pages of tests/data/pages: data/make_pages.py makes them and computes what they show.

namespace pdf {
namespace {

using Image = std::shared_ptr<vantu::IQorImage>;

const std::string kPages = IMAGEOP_TEST_DATA "/pages/";
constexpr double kDotsPerInch = 72;

Image PaintFirstPage(const std::string& path, std::size_t threads = 1, const Budget& budget = {}) {
    std::vector<std::unique_ptr<PageContext>> contexts;
    while (contexts.size() < threads) {
        contexts.push_back(std::make_unique<PageContext>(path));
        contexts.back()->budget = budget;
    }
    return PaintPage(contexts, 0, kDotsPerInch);
}

// The colour of a pixel as 0xRRGGBB.
unsigned int ColorAt(const vantu::IQorImage& image, unsigned int x, unsigned int y) {
    const std::size_t stride = vantu::RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    const unsigned char* const pixel = image.GetPixelData() + y * stride + 4 * std::size_t{x};
    return static_cast<unsigned int>(pixel[2]) << 16 | static_cast<unsigned int>(pixel[1]) << 8 | pixel[0];
}

// What the formulas say of a cell: in real numbers, and with each step cut off to a byte.
struct Cell {
    unsigned int real = 0;
    unsigned int cutOff = 0;
};

// By how much a colour lies outside of the two at most, in any channel.
int DistanceOf(unsigned int color, const Cell& cell) {
    int most = 0;
    for (const int shift : {0, 8, 16}) {
        const auto channel = [shift](unsigned int c) { return static_cast<int>(c >> shift & 255U); };
        const auto [low, high] = std::minmax({channel(cell.real), channel(cell.cutOff)});
        most = std::max({most, low - channel(color), channel(color) - high});
    }
    return most;
}

std::vector<unsigned char> BytesOf(const vantu::IQorImage& image) {
    const std::size_t stride = vantu::RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    return {image.GetPixelData(), image.GetPixelData() + stride * image.GetHeight()};
}

std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".pdf") files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

// A page of cells of one colour each.
struct Expected {
    std::string name;
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<Cell> cells;
};

std::vector<Expected> ReadExpected() {
    std::ifstream in(kPages + "expected.txt");
    std::vector<Expected> pages;
    for (Expected page; in >> page.name >> std::dec >> page.width >> page.height;) {
        page.cells.resize(std::size_t{page.width} * page.height);
        for (Cell& cell : page.cells) {
            in >> std::hex >> cell.real;
            cell.cutOff = cell.real;
            if (in.peek() == '/') in.ignore() >> cell.cutOff;
        }
        pages.push_back(page);
    }
    return pages;
}

TEST(Pages, ShowWhatTheFormulasSay) {
    const std::vector<Expected> pages = ReadExpected();
    ASSERT_EQ(pages.size(), FilesIn(kPages).size());
    for (const Expected& page : pages) {
        const Image image = PaintFirstPage(kPages + page.name + ".pdf");
        const unsigned int cell = image->GetWidth() / page.width;
        ASSERT_EQ(image->GetHeight(), cell * page.height) << page.name;
        // Pixels at the edges of cells are looked at like all others: there are no seams and no speckles.
        int worst = 0;
        std::ostringstream where;
        for (unsigned int y = 0; y < image->GetHeight(); ++y) {
            for (unsigned int x = 0; x < image->GetWidth(); ++x) {
                const Cell& expected = page.cells[y / cell * page.width + x / cell];
                const int distance = DistanceOf(ColorAt(*image, x, y), expected);
                if (distance <= worst) continue;
                worst = distance;
                where.str("");
                where << " at " << x << ", " << y << ": " << std::hex << ColorAt(*image, x, y) << ", not "
                      << expected.real << " or " << expected.cutOff;
            }
        }
        EXPECT_LE(worst, 2) << page.name << where.str();
    }
}

TEST(Pages, AreTheSameBytesWithOneThreadAndMany) {
    for (const std::string& file : FilesIn(kPages))
        EXPECT_EQ(BytesOf(*PaintFirstPage(file, 1)), BytesOf(*PaintFirstPage(file, 3))) << file;
}

TEST(Pages, AreTheSameBytesOnEveryInstructionSet) {
    for (const std::string& file : FilesIn(kPages)) {
        const std::vector<unsigned char> bytes = BytesOf(*PaintFirstPage(file));
        for (const vantu::test::VectorTarget& target : vantu::test::VectorTargets()) {
            const vantu::test::ForcedTarget forced(target);
            EXPECT_EQ(BytesOf(*PaintFirstPage(file)), bytes) << file << " on " << target;
        }
    }
}

// Smooth edges may lie between the colours of both sides, and hard ones are either. What lies far beyond has wrapped.
TEST(Pages, HaveNoSpecklesAtEdges) {
    const Image image = PaintFirstPage(kPages + "round/discs.pdf");
    for (unsigned int y = 1; y + 1 < image->GetHeight(); ++y) {
        for (unsigned int x = 1; x + 1 < image->GetWidth(); ++x) {
            Cell range{0xFFFFFF, 0};
            for (unsigned int neighbour = 0; neighbour < 9; ++neighbour) {
                if (neighbour == 4) continue;
                const unsigned int color = ColorAt(*image, x - 1 + neighbour % 3, y - 1 + neighbour / 3);
                for (const unsigned int channel : {0xFF0000U, 0xFF00U, 0xFFU}) {
                    range.real = (range.real & ~channel) | std::min(range.real & channel, color & channel);
                    range.cutOff = (range.cutOff & ~channel) | std::max(range.cutOff & channel, color & channel);
                }
            }
            EXPECT_LE(DistanceOf(ColorAt(*image, x, y), range), 24) << x << ", " << y;
        }
    }
}

TEST(DamagedPages, ShowWhatIsWhole) {
    for (const std::string& file : FilesIn(kPages + "damaged")) {
        const Budget budget{20'000, 24};
        const Image image = PaintFirstPage(file, 1, budget);
        EXPECT_EQ(ColorAt(*image, 5, image->GetHeight() - 5), 0x00FF00U) << file;
        EXPECT_EQ(BytesOf(*PaintFirstPage(file, 3, budget)), BytesOf(*image)) << file;
    }
}

TEST(DamagedPages, AreRefusedWithATextOrPainted) {
    for (const std::string& file : FilesIn(kPages + "broken_off")) {
        try {
            EXPECT_NE(PaintFirstPage(file), nullptr) << file;
        } catch (const std::exception& error) {
            EXPECT_STRNE(error.what(), "") << file;
        }
    }
    EXPECT_THROW(PaintFirstPage(kPages + "broken_off/no_file.pdf"), std::exception);
    EXPECT_THROW(PaintFirstPage(kPages + "broken_off/huge_page.pdf"), std::exception);
    EXPECT_THROW(PaintFirstPage(kPages + "no such file.pdf"), std::exception);
}

}  // namespace
}  // namespace pdf
