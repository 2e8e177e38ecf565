#pragma once

#include <vantu/IPDFImageBlender.h>

#include "painter/Rectangles.h"

namespace vantu {

/// A coverage that keeps its ranges as they are: none is joined to another. Those it is given do not overlap.
class RangeList : public IPDFImageBlender::Coverage {
public:
    [[nodiscard]] Coverage* Clone() const override { return new RangeList(*this); }
    void AddCoverage(const Coverage& other) override {
        const std::size_t count = other.GetRanges().size();  // `other` may be this one
        ranges.reserve(ranges.size() + count);
        for (std::size_t i = 0; i < count; ++i) ranges.push_back(other.GetRanges()[i]);
    }
    void AddRange(const Rectangle& range) override { ranges.push_back(range); }
    [[nodiscard]] const std::vector<Rectangle>& GetRanges() const override { return ranges; }

    std::vector<Rectangle> ranges;
};

}  // namespace vantu
