#include "blend/RangeWalk.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <vector>

#include "support/TestImage.h"

namespace vantu::test {
namespace {

/// A rectangle that was painted: target, source, size, and the place in the mask, -1 for none.
using Piece = std::tuple<int, int, int, int, int, int, int, int>;

struct Recorder {
    void Rect(const PaintArea& a) { Add(a, -1, -1); }
    void Masked(const PaintArea& a, unsigned int x, unsigned int y) {
        Add(a, static_cast<int>(x), static_cast<int>(y));
    }
    void Add(const PaintArea& a, int x, int y) {
        pieces.emplace_back(a.targetX, a.targetY, a.sourceX, a.sourceY, static_cast<int>(a.width),
                            static_cast<int>(a.height), x, y);
    }
    std::vector<Piece> pieces;
};

std::vector<Piece> Walk(const Range<int, 2>& range, const Point<int, 2>& offset, const Range<int, 2>* maskPlace) {
    const auto coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange(range);
    std::shared_ptr<IQorImage> mask;
    Point<int, 2> maskOffset{0, 0};
    if (maskPlace != nullptr) {
        const auto [x0, y0, x1, y1] = *maskPlace;
        mask = std::make_shared<TestImage>(
            Shape{static_cast<unsigned int>(x1 - x0), static_cast<unsigned int>(y1 - y0), PixelFormat::Index8});
        maskOffset = {x0, y0};
    }
    const std::shared_ptr<IPDFTransferFunction> transfer;
    const unsigned char alpha = 255;
    Recorder recorder;
    WalkRanges(BlendRequestBase{coverage.get(), &offset, &mask, &transfer, &maskOffset, &alpha}, recorder);
    return recorder.pieces;
}

TEST(RangeWalk, SplitsARangeAroundItsMask) {
    struct Case {
        const char* what;
        Range<int, 2> range;
        Point<int, 2> offset;
        Range<int, 2> mask;
        std::vector<Piece> pieces;
    };
    for (const Case& c : {
             Case{"top, bottom, left, right, centre",
                  {0, 0, 10, 10},
                  {100, 200},
                  {2, 3, 5, 7},
                  {{100, 200, 0, 0, 10, 3, -1, -1},
                   {100, 207, 0, 7, 10, 3, -1, -1},
                   {100, 203, 0, 3, 2, 4, -1, -1},
                   {105, 203, 5, 3, 5, 4, -1, -1},
                   {102, 203, 2, 3, 3, 4, 0, 0}}},
             Case{"mask at the corner",
                  {5, 5, 15, 15},
                  {0, 0},
                  {0, 0, 10, 10},
                  {{5, 10, 5, 10, 10, 5, -1, -1}, {10, 5, 10, 5, 5, 5, -1, -1}, {5, 5, 5, 5, 5, 5, 5, 5}}},
             Case{"mask all over displaces the target",
                  {5, 5, 15, 15},
                  {2, 3},
                  {0, 0, 20, 20},
                  {{7, 8, 5, 5, 10, 10, 5, 5}}},
             Case{"mask elsewhere displaces the source",
                  {5, 5, 15, 15},
                  {2, 3},
                  {20, 20, 30, 30},
                  {{5, 5, 7, 8, 10, 10, -1, -1}}},
             Case{"mask that only touches", {5, 5, 15, 15}, {2, 3}, {15, 5, 30, 30}, {{5, 5, 7, 8, 10, 10, -1, -1}}},
             Case{"empty mask", {5, 5, 15, 15}, {2, 3}, {8, 8, 8, 8}, {{5, 5, 7, 8, 10, 10, -1, -1}}},
             Case{"mask before 0", {5, 5, 15, 15}, {2, 3}, {-9, 0, -4, 30}, {{5, 5, 7, 8, 10, 10, -1, -1}}},
             Case{"range from before 0 into its mask",
                  {-5, 5, 5, 15},
                  {2, 3},
                  {-9, 0, 30, 30},
                  {{-5, 5, -3, 8, 10, 10, -1, -1}}},
             Case{"range and mask before 0",
                  {-8, 5, -2, 15},
                  {9, 0},
                  {-9, 0, -4, 30},
                  {{5, 5, -4, 5, 2, 10, -1, -1}, {1, 5, -8, 5, 4, 10, 1, 5}}},
             Case{"empty range", {5, 5, 5, 15}, {0, 0}, {0, 0, 20, 20}, {}},
         }) {
        EXPECT_EQ(Walk(c.range, c.offset, &c.mask), c.pieces) << c.what;
    }
    EXPECT_EQ(Walk({5, 5, 15, 15}, {2, 3}, nullptr), (std::vector<Piece>{{5, 5, 7, 8, 10, 10, -1, -1}}));
    EXPECT_TRUE(Walk({5, 5, 15, 5}, {2, 3}, nullptr).empty());
}

TEST(RangeWalk, CoversEachPixelOnceInsideAndOutsideTheMask) {
    Random random(1);
    const auto box = [&](int least) {
        const int x = least + static_cast<int>(Between(random, 0, 15)),
                  y = least + static_cast<int>(Between(random, 0, 15));
        return Range<int, 2>{x, y, x + static_cast<int>(Between(random, 0, 12)),
                             y + static_cast<int>(Between(random, 0, 12))};
    };
    for (int i = 0; i < 3000; ++i) {
        const Range<int, 2> range = box(0), mask = box(-8);
        const Point<int, 2> offset{static_cast<int>(random() % 9) - 4, static_cast<int>(random() % 9) - 4};
        const bool meet = std::max(range.x0, mask.x0) < std::min(range.x1, mask.x1) &&
                          std::max(range.y0, mask.y0) < std::min(range.y1, mask.y1);
        using Pixel = std::tuple<int, int, int, int, int, int>;  // target, source, mask
        std::multimap<std::pair<int, int>, Pixel> expected, walked;
        for (int y = range.y0; y < range.y1; ++y) {
            for (int x = range.x0; x < range.x1; ++x) {
                const bool masked = x >= mask.x0 && x < mask.x1 && y >= mask.y0 && y < mask.y1;
                const Point<int, 2> moved{x + offset.x, y + offset.y};
                const Pixel pixel =
                    meet ? Pixel{moved.x, moved.y, x, y, masked ? x - mask.x0 : -1, masked ? y - mask.y0 : -1}
                         : Pixel{x, y, moved.x, moved.y, -1, -1};
                expected.emplace(std::pair(x, y), pixel);
            }
        }
        for (const auto& [tx, ty, sx, sy, width, height, mx, my] : Walk(range, offset, &mask)) {
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const Pixel pixel{tx + x, ty + y, sx + x, sy + y, mx < 0 ? -1 : mx + x, my < 0 ? -1 : my + y};
                    walked.emplace(meet ? std::pair(sx + x, sy + y) : std::pair(tx + x, ty + y), pixel);
                }
            }
        }
        ASSERT_EQ(walked, expected) << "range " << i;
    }
}

}  // namespace
}  // namespace vantu::test
