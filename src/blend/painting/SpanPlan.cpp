#include "blend/painting/SpanPlan.h"

namespace vantu {
namespace {

// Narrower rectangles are painted several rows to a span. Pixels that can be painted where they lie gain from that only
// while a row is shorter than a few vectors.
constexpr unsigned int kNarrowInPlace = 64;
constexpr unsigned int kNarrow = 256;

/// Most pixels that are taken for one row.
constexpr std::uint64_t kMostJoined = 1U << 30;

/// The same pixels as one row, if the rows of target and source follow each other without gaps: outside groups, of
/// which each row has its place among the group's alphas.
PaintArea RowsJoined(const PaintArea& area, const PaintCall& call) {
    const std::uint64_t pixels = std::uint64_t{area.width} * area.height;
    const auto gapless = [&](std::int64_t step, unsigned int bits) {
        return step * 8 == std::int64_t{area.width} * bits;
    };
    if (call.group || pixels > kMostJoined || !gapless(call.targetStep, call.kernel.targetBits) ||
        !gapless(call.sourceStep, call.kernel.sourceBits)) {
        return area;
    }
    PaintArea joined = area;
    joined.width = static_cast<unsigned int>(pixels);
    joined.height = 1;
    return joined;
}

}  // namespace

SpanPlan PlanSpans(const PaintArea& area, MaskKind mask, const PaintCall& call) {
    using Way = SpanPlan::Way;
    if (call.inOrder || mask == MaskKind::Other) return {Way::InOrder, area, area.width, area.height};
    if (!call.group && !call.kernel.hasColors) return {Way::Nothing, area, 0, 0};

    const PaintArea whole = mask == MaskKind::None ? RowsJoined(area, call) : area;
    const bool copies = call.kernel.copiesBytes && !call.group && call.alpha == 255;
    if (mask == MaskKind::None && copies) return {Way::Copy, whole, whole.width, 1};
    const bool inPlace = call.kernel.inPlace;
    if (whole.width < (inPlace ? kNarrowInPlace : kNarrow)) {
        return {Way::Spans, whole, whole.width, kSpanPixels / whole.width};
    }
    return {Way::Spans, whole, inPlace && mask == MaskKind::None ? whole.width : kSpanPixels, 1};
}

}  // namespace vantu
