#include "blend/GroupResolve.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "blend/painting/SpanPlan.h"
#include "blend/stages/Stages.h"
#include "pixel/Formats.h"
#include "pixel/PixelRows.h"
#include "pixel/Spans.h"

namespace vantu {
namespace {

/// @return null for a group whose image is its result.
CompositeStage StageOf(const GroupState& group) {
    const BlendStages& stages = ActiveStages();
    if (group.plainResolve) return group.keepBackdrop ? stages.mixWithBackdrop : stages.rescaleToGroupAlpha;
    return group.keepBackdrop ? nullptr : stages.removeBackdrop;
}

/// Resolves spans of rows of a group's image.
class SpanResolver {
public:
    SpanResolver(GroupState& group, PixelFormat format, CompositeStage stage)
        : group_(group),
          stage_(stage),
          codec_(ActiveSpanCodecs().Of(format)),
          image_(RowsFromTop(*group.image, format)),
          snapshot_(RowsFromTop(std::as_const(*group.backdrop), format)),
          inPlace_(codec_.inPlace || (group.plainResolve && group.keepBackdrop)) {}

    /// `count` pixels from (x, y) on, at most `kSpanPixels`. Bytes are mixed as they are stored, whatever the format;
    /// otherwise pixels are packed before and stored after where they do not lie packed in memory.
    void Resolve(std::size_t x, std::size_t y, std::size_t count) {
        const PixelRows<unsigned char> pixels{image_.Row(y) + x * codec_.bytesPerPixel, 0, 1};
        const PixelRows<const unsigned char> before{snapshot_.Row(y) + x * codec_.bytesPerPixel, 0, 1};
        CompositeSpan span{};
        span.count = count;
        span.groupAlpha = group_.groupAlpha.data() + y * group_.image->GetWidth() + x;
        span.target = inPlace_ ? pixels.first : packed_;
        span.snapshot = inPlace_ ? before.first : packedSnapshot_;
        if (!inPlace_) {
            codec_.read({pixels.first, 0, 1}, count, packed_);
            codec_.read(before, count, packedSnapshot_);
        }
        stage_(span);
        if (!inPlace_) codec_.write(pixels, count, packed_, nullptr);
    }

private:
    GroupState& group_;
    CompositeStage stage_;
    const SpanCodec& codec_;
    PixelRows<unsigned char> image_;
    PixelRows<const unsigned char> snapshot_;
    bool inPlace_;
    alignas(64) unsigned char packed_[kSpanPixels * kPackedBytes];
    alignas(64) unsigned char packedSnapshot_[kSpanPixels * kPackedBytes];
};

/// An edge of a range, cut to the edges 0 and `size` of an image.
std::size_t Cut(int coordinate, unsigned int size) {
    return coordinate < 0 ? 0 : std::min(static_cast<unsigned int>(coordinate), size);
}

}  // namespace

void ResolveGroup(GroupState& group) {
    if (group.image->GetPixelData() == nullptr) return;  // the host has taken its memory away meanwhile
    const IQorImage& decisive = group.plainResolve ? *group.image : *group.backdrop;
    const PixelFormat format = decisive.GetPixelFormat();
    const CompositeStage stage = StageOf(group);
    if (stage == nullptr || FactsOf(format).colors != PixelColors::Premultiplied) return;

    SpanResolver resolver(group, format, stage);
    const unsigned int width = group.image->GetWidth(), height = group.image->GetHeight();
    for (const Range<int, 2>& range : group.coverage->GetRanges()) {
        // What lies outside the image is passed over: a masked element is painted at its range plus the offset.
        const std::size_t x1 = Cut(range.x1, width), y1 = Cut(range.y1, height);
        for (std::size_t y = Cut(range.y0, height); y < y1; ++y) {
            for (std::size_t x = Cut(range.x0, width); x < x1; x += kSpanPixels) {
                resolver.Resolve(x, y, std::min<std::size_t>(kSpanPixels, x1 - x));
            }
        }
    }
}

}  // namespace vantu
