#pragma once

#include <vector>

#include "blend/CPDFImageBlender.h"

namespace vantu {

/// The list of ranges behind `IPDFImageBlender::CreateCoverage`.
class CPDFImageBlender::CCoverage : public IPDFImageBlender::Coverage {
public:
    [[nodiscard]] Coverage* Clone() const override;
    void AddCoverage(const Coverage& other) override;
    void AddRange(const Range<int, 2>& range) override;
    [[nodiscard]] const std::vector<Range<int, 2>>& GetRanges() const override;

private:
    std::vector<Range<int, 2>> ranges_;
};

}  // namespace vantu
