#pragma once

#include <vantu/IPDFImageBlender.h>

#include <memory>
#include <vector>

#include "painter/Rectangles.h"

namespace vantu {

/// A coverage that keeps its ranges as they are: none is joined to another. Those it is given do not overlap.
class RangeList : public IPDFImageBlender::Coverage {
public:
    [[nodiscard]] Coverage* Clone() const override {
        auto copy = std::make_unique<RangeList>();
        copy->ranges.swap(spare_);
        copy->ranges = ranges;
        return copy.release();
    }
    /// Keeps the memory of a copy that is no longer looked at for the next copy.
    void Reuse(RangeList& copy) { spare_.swap(copy.ranges); }
    void AddCoverage(const Coverage& other) override {
        const std::size_t count = other.GetRanges().size();  // `other` may be this one
        ranges.reserve(ranges.size() + count);
        for (std::size_t i = 0; i < count; ++i) ranges.push_back(other.GetRanges()[i]);
    }
    void AddRange(const Rectangle& range) override { ranges.push_back(range); }
    [[nodiscard]] const std::vector<Rectangle>& GetRanges() const override { return ranges; }

    std::vector<Rectangle> ranges;

private:
    mutable std::vector<Rectangle> spare_;
};

}  // namespace vantu
