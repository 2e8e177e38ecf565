#include <gtest/gtest.h>
#include <vantu/IPDFImageBlender.h>

#include <tuple>
#include <vector>

namespace vantu::test {
namespace {

using Ranges = std::vector<std::tuple<int, int, int, int>>;
using CoveragePointer = std::shared_ptr<IPDFImageBlender::Coverage>;

CoveragePointer Make(const Ranges& ranges) {
    auto coverage = IPDFImageBlender::CreateCoverage();
    for (const auto& [x0, y0, x1, y1] : ranges) coverage->AddRange({x0, y0, x1, y1});
    return coverage;
}

Ranges List(const IPDFImageBlender::Coverage& coverage) {
    Ranges list;
    for (const Range<int, 2>& r : coverage.GetRanges()) list.emplace_back(r.x0, r.y0, r.x1, r.y1);
    return list;
}

TEST(Coverage, MergesTouchingRangesInOnePassOverTheList) {
    struct Case {
        Ranges added;
        Ranges list;
    };
    for (const Case& c : {
             Case{{{1, 2, 3, 4}}, {{1, 2, 3, 4}}},
             Case{{{0, 0, 10, 10}, {10, 0, 20, 10}}, {{0, 0, 20, 10}}},
             Case{{{0, 0, 10, 10}, {10, 10, 20, 20}}, {{0, 0, 20, 20}}},
             Case{{{0, 0, 10, 10}, {11, 0, 20, 10}}, {{0, 0, 10, 10}, {11, 0, 20, 10}}},
             Case{{{0, 0, 10, 10}, {0, 11, 10, 20}}, {{0, 0, 10, 10}, {0, 11, 10, 20}}},
             Case{{{0, 0, 2, 2}, {10, 0, 12, 2}, {1, 0, 20, 2}}, {{0, 0, 20, 2}}},
             Case{{{5, 0, 6, 1}, {0, 0, 2, 2}, {1, 0, 4, 1}}, {{5, 0, 6, 1}, {0, 0, 4, 2}}},
             // What was passed over before the new range grew stays, even inside it.
             Case{{{10, 15, 11, 16}, {12, 12, 20, 20}, {10, 10, 12, 12}}, {{10, 15, 11, 16}, {10, 10, 20, 20}}},
             Case{{{12, 12, 20, 20}, {10, 15, 11, 16}, {10, 10, 12, 12}}, {{10, 10, 20, 20}}},
             Case{{{3, 3, 3, 3}, {9, 9, 9, 9}}, {{3, 3, 3, 3}, {9, 9, 9, 9}}},
             Case{{{-5, -5, -1, -1}, {-1, -9, 0, -5}}, {{-5, -9, 0, -1}}},
         }) {
        EXPECT_EQ(List(*Make(c.added)), c.list);
    }
}

TEST(Coverage, AddsTheRangesOfAnotherOrOfItself) {
    const auto coverage = Make({{0, 0, 1, 1}});
    const CoveragePointer clone(coverage->Clone());
    coverage->AddCoverage(*Make({{20, 0, 21, 1}, {1, 1, 5, 5}}));
    EXPECT_EQ(List(*coverage), (Ranges{{20, 0, 21, 1}, {0, 0, 5, 5}}));
    EXPECT_EQ(List(*clone), (Ranges{{0, 0, 1, 1}}));
    coverage->AddCoverage(*coverage);
    EXPECT_EQ(List(*coverage), (Ranges{{0, 0, 5, 5}, {20, 0, 21, 1}}));
    for (const Ranges& range : {Ranges{{5, 0, 0, 5}}, {{0, 5, 5, 0}}}) {
        const auto inverted = Make(range);  // touches nothing, not even itself
        inverted->AddCoverage(*inverted);
        EXPECT_EQ(List(*inverted), (Ranges{range[0], range[0]}));
    }
}

}  // namespace
}  // namespace vantu::test
