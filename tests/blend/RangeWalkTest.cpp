#include "blend/definition/RangeWalk.h"

#include <gtest/gtest.h>

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
        const auto extent = [](int start, int end) {
            return static_cast<unsigned int>(end) - static_cast<unsigned int>(start);
        };
        mask = std::make_shared<TestImage>(Shape{extent(x0, x1), extent(y0, y1), PixelFormat::Index8});
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
             Case{"mask whose end wraps: it lies from there to its start",
                  {5, 5, 15, 15},
                  {2, 3},
                  {2147483640, 0, -2147483640, 30},
                  {{7, 8, 5, 5, 10, 10, 2147483645, 5}}},
             Case{"the same downward",
                  {5, 5, 15, 15},
                  {2, 3},
                  {0, 2147483640, 30, -2147483640},
                  {{7, 8, 5, 5, 10, 10, 5, 2147483645}}},
             Case{"empty range", {5, 5, 5, 15}, {0, 0}, {0, 0, 20, 20}, {}},
         }) {
        EXPECT_EQ(Walk(c.range, c.offset, &c.mask), c.pieces) << c.what;
    }
    EXPECT_EQ(Walk({5, 5, 15, 15}, {2, 3}, nullptr), (std::vector<Piece>{{5, 5, 7, 8, 10, 10, -1, -1}}));
    EXPECT_TRUE(Walk({5, 5, 15, 5}, {2, 3}, nullptr).empty());
}

}  // namespace
}  // namespace vantu::test
