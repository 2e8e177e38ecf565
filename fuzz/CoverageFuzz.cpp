#include <vantu/IPDFImageBlender.h>

#include <array>
#include <bitset>
#include <memory>
#include <vector>

#include "fuzz/Fuzz.h"

// Coverages against a naive model on a small grid: a range is the set of the grid points in it, edges included, so that
// ranges touch where their sets share a point.

using namespace vantu;
using namespace vantu::fuzz;

namespace {

using Coverage = IPDFImageBlender::Coverage;

constexpr int kLow = -4;
constexpr int kHigh = 11;
constexpr int kSide = kHigh - kLow + 1;

class Points {
public:
    explicit Points(const Range<int, 2>& range) {
        for (int y = range.y0; y <= range.y1; ++y) {
            for (int x = range.x0; x <= range.x1; ++x) points_.set(Index(x, y));
        }
    }
    [[nodiscard]] bool Has(int x, int y) const { return points_.test(Index(x, y)); }
    [[nodiscard]] bool Meets(const Points& other) const { return (points_ & other.points_).any(); }
    /// The smallest range that holds these points and the other ones.
    [[nodiscard]] Range<int, 2> BoxWith(const Points& other) const {
        Range<int, 2> box{kHigh, kHigh, kLow, kLow};
        for (int y = kLow; y <= kHigh; ++y) {
            for (int x = kLow; x <= kHigh; ++x) {
                if (!Has(x, y) && !other.Has(x, y)) continue;
                box = {std::min(box.x0, x), std::min(box.y0, y), std::max(box.x1, x), std::max(box.y1, y)};
            }
        }
        return box;
    }
    bool operator==(const Points&) const = default;

private:
    static std::size_t Index(int x, int y) { return static_cast<std::size_t>((y - kLow) * kSide + x - kLow); }
    std::bitset<kSide * kSide> points_;
};

using Model = std::vector<Points>;

void Add(Model& model, const Points& added) {
    Points merged = added;
    Model kept;
    for (const Points& points : model) {
        if (merged.Meets(points)) {
            merged = Points(merged.BoxWith(points));
        } else {
            kept.push_back(points);
        }
    }
    kept.push_back(merged);
    model = kept;
}

void RequireSame(const Coverage& coverage, const Model& model) {
    Model ranges;
    for (const Range<int, 2>& range : coverage.GetRanges()) ranges.emplace_back(range);
    Require(ranges == model, "a coverage holds the merged ranges in order");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Choices choices({data, size});
    struct Pair {
        std::shared_ptr<Coverage> coverage = IPDFImageBlender::CreateCoverage();
        Model model;
    };
    std::array<Pair, 3> pairs;
    while (choices.Any()) {
        Pair& pair = pairs.at(static_cast<std::size_t>(choices.Between(0, 2)));
        const int action = choices.Between(0, 15);
        if (action == 0) {
            pair.coverage.reset(std::as_const(*pair.coverage).Clone());
        } else if (action == 1) {
            const Pair& other = pairs.at(static_cast<std::size_t>(choices.Between(0, 2)));
            // Of a coverage that is added to itself each range is read when its turn comes.
            const std::size_t count = other.model.size();
            for (std::size_t i = 0; i < count && i < other.model.size(); ++i) Add(pair.model, Points(other.model[i]));
            pair.coverage->AddCoverage(*other.coverage);
        } else {
            const int x = choices.Between(kLow, kHigh), y = choices.Between(kLow, kHigh);
            const Range<int, 2> range{x, y, std::min(kHigh, x + choices.Between(0, 5)),
                                      std::min(kHigh, y + choices.Between(0, 5))};
            pair.coverage->AddRange(range);
            Add(pair.model, Points(range));
        }
        RequireSame(*pair.coverage, pair.model);
    }
    return 0;
}
