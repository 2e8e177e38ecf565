#pragma once

#include <memory>
#include <vector>

#include "blend/CPDFImageBlender.h"

namespace vantu {

/// The list of ranges behind `IPDFImageBlender::CreateCoverage`.
class CPDFImageBlender::CCoverage final : public IPDFImageBlender::Coverage {
public:
    [[nodiscard]] Coverage* Clone() const override;
    void AddCoverage(const Coverage& other) override;
    void AddRange(const Range<int, 2>& range) override;
    [[nodiscard]] const std::vector<Range<int, 2>>& GetRanges() const override;

private:
    std::vector<Range<int, 2>> ranges_;
};

/// A copy of a coverage. A host's class makes its own.
std::shared_ptr<IPDFImageBlender::Coverage> CopyOf(const IPDFImageBlender::Coverage& coverage);

}  // namespace vantu
