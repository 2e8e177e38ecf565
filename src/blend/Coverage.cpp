#include "blend/Coverage.h"

#include <algorithm>
#include <cstddef>
#include <typeinfo>

namespace vantu {
namespace {

/// Whether two ranges meet as closed intervals: a shared edge or corner is enough.
bool Touch(const Range<int, 2>& a, const Range<int, 2>& b) {
    return a.x0 <= b.x1 && a.x1 >= b.x0 && a.y0 <= b.y1 && a.y1 >= b.y0;
}

Range<int, 2> BoundingBox(const Range<int, 2>& a, const Range<int, 2>& b) {
    return {std::min(a.x0, b.x0), std::min(a.y0, b.y0), std::max(a.x1, b.x1), std::max(a.y1, b.y1)};
}

}  // namespace

IPDFImageBlender::Coverage* CPDFImageBlender::CCoverage::Clone() const {
    return new CCoverage(*this);
}

void CPDFImageBlender::CCoverage::AddCoverage(const Coverage& other) {
    // The count is taken once, and each range by value: `other` may be this object, whose list grows and moves.
    const std::size_t count = other.GetRanges().size();
    for (std::size_t i = 0; i < count && i < other.GetRanges().size(); ++i) {
        const Range<int, 2> range = other.GetRanges()[i];
        AddRange(range);
    }
}

void CPDFImageBlender::CCoverage::AddRange(const Range<int, 2>& range) {
    // One pass in list order: what was passed over before `merged` grew stays, even if it now touches.
    std::vector<Range<int, 2>> kept;
    kept.reserve(ranges_.size() + 1);
    Range<int, 2> merged = range;
    for (const Range<int, 2>& existing : ranges_) {
        if (Touch(merged, existing)) {
            merged = BoundingBox(merged, existing);
        } else {
            kept.push_back(existing);
        }
    }
    kept.push_back(merged);
    ranges_.swap(kept);
}

const std::vector<Range<int, 2>>& CPDFImageBlender::CCoverage::GetRanges() const {
    return ranges_;
}

std::shared_ptr<IPDFImageBlender::Coverage> IPDFImageBlender::CreateCoverage() {
    return std::make_shared<CPDFImageBlender::CCoverage>();
}

std::shared_ptr<IPDFImageBlender::Coverage> CopyOf(const IPDFImageBlender::Coverage& coverage) {
    using Own = CPDFImageBlender::CCoverage;
    // By address: comparing the names as well would only cost time.
    if (&typeid(coverage) == &typeid(Own)) return std::make_shared<Own>(static_cast<const Own&>(coverage));
    return std::shared_ptr<IPDFImageBlender::Coverage>(coverage.Clone());
}

}  // namespace vantu
