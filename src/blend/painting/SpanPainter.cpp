#include "blend/painting/SpanPainter.h"

#include <algorithm>
#include <cstring>

#include "blend/painting/ImageMemory.h"

namespace vantu {
namespace {

/// The pixels of an area's size from (x, y) on.
template <typename Byte>
PixelRows<Byte> At(const PixelRows<Byte>& rows, std::size_t bytesPerPixel, int x, int y, const PaintArea& area) {
    return {rows.Row(static_cast<unsigned int>(y)) + static_cast<unsigned int>(x) * bytesPerPixel, rows.step,
            area.height};
}

/// Packed pixels: where they lie if they are packed there, else in `buffer`.
const unsigned char* Pack(PixelFormat format, bool packed, const PixelRows<const unsigned char>& rows,
                          std::size_t width, unsigned char* buffer) {
    if (packed && rows.count == 1) return rows.first;
    ActiveSpanCodecs().Of(format).read(rows, width, buffer);
    return buffer;
}

/// The group alphas of an area, whose entries lie row by row at the group image's width.
std::uint32_t* GroupAlphaAt(const BlendRequest<PDFBlend::GroupBlendingTraits>& request, const PaintArea& area,
                            unsigned int row) {
    return request.groupAlpha->data() + std::size_t{*request.width} * (static_cast<unsigned int>(area.targetY) + row) +
           static_cast<unsigned int>(area.targetX);
}

}  // namespace

template <typename Traits>
SpanPainter<Traits>::SpanPainter(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                                 const BlendRequest<Traits>& request)
    : kernel_(kernel),
      request_(request),
      targetRows_(RowsFromTop(destination, kernel.destination)),
      sourceRows_(RowsFromTop(source, kernel.source)) {
    if constexpr (Traits::kGroup) {
        form_ = *request.knockout ? CompositeForm::Knockout : CompositeForm::Group;
        snapshotRows_ = SnapshotRows(*request.backdrop, kernel.destination, targetRows_.step);
    }
    stage_ = ActiveStages().Of(kernel.mode, form_, kernel.colors);
}

template <typename Traits>
void SpanPainter<Traits>::Start(const PaintArea& area, Span<Traits>& span) const {
    CompositeSpan& composite = span.composite;
    composite.alpha = *request_.alpha;
    composite.count = std::size_t{area.width} * area.height;
    composite.opacity = nullptr;
    composite.select = nullptr;
    composite.source =
        Pack(kernel_.source, kernel_.sourcePacked,
             At(sourceRows_, kernel_.sourceBytes, area.sourceX, area.sourceY, area), area.width, span.source);
}

template <typename Traits>
bool SpanPainter<Traits>::Paint(const PaintArea& area, Verdict verdict, Span<Traits>& span) const {
    switch (verdict) {
        case Verdict::Skip: return true;
        case Verdict::Copy: CopyThroughColor(area, span); return true;
        case Verdict::InOrder: return false;
        case Verdict::Composite: break;
    }
    if (!GatherGroupAlpha(area, span)) return false;
    Composite(area, span);
    ScatterGroupAlpha(area, span);
    return true;
}

template <typename Traits>
bool SpanPainter<Traits>::PaintInPlace(const PaintArea& area) const {
    const auto target = At(targetRows_, kernel_.targetBytes, area.targetX, area.targetY, area);
    const auto source = At(sourceRows_, kernel_.sourceBytes, area.sourceX, area.sourceY, area);
    CompositeSpan span{};
    span.target = target.first;
    span.source = source.first;
    span.count = area.width;
    span.alpha = *request_.alpha;
    span.keepClear = kernel_.keepClear;
    span.rows = area.height;
    span.targetStep = target.step;
    span.sourceStep = source.step;
    if constexpr (Traits::kGroup) {
        if (!*request_.groupAlphaFits) return false;
        span.snapshot = At(*snapshotRows_, kernel_.targetBytes, area.targetX, area.targetY, area).first;
        span.groupAlpha = GroupAlphaAt(request_, area, 0);
        span.groupAlphaStep = *request_.width;
    }
    StageFor(span.count * span.rows)(span);
    return true;
}

template <typename Traits>
void SpanPainter<Traits>::CopyRows(const PaintArea& area) const {
    const auto target = At(targetRows_, kernel_.targetBytes, area.targetX, area.targetY, area);
    const auto source = At(sourceRows_, kernel_.sourceBytes, area.sourceX, area.sourceY, area);
    const std::size_t bytes = std::size_t{area.width} * kernel_.sourceBytes;
    for (std::size_t row = 0; row < area.height; ++row) std::memcpy(target.Row(row), source.Row(row), bytes);
}

template <typename Traits>
MixedRows SpanPainter<Traits>::RowsToMix(const PaintArea& area) const {
    return {At(targetRows_, kernel_.targetBytes, area.targetX, area.targetY, area),
            At(sourceRows_, kernel_.sourceBytes, area.sourceX, area.sourceY, area), area.width,
            kernel_.colors == PackedColors::Premultiplied};
}

/// Makes the span work on its group alphas: in place for one row, else in a buffer.
/// @return false if they do not fit the stages.
template <typename Traits>
bool SpanPainter<Traits>::GatherGroupAlpha(const PaintArea& area, Span<Traits>& span) const {
    if constexpr (Traits::kGroup) {
        if (!*request_.groupAlphaFits) return false;
        span.composite.groupAlpha = GroupAlphaAt(request_, area, 0);
        if (area.height == 1) return true;
        span.composite.groupAlpha = span.groupAlpha;
        for (unsigned int row = 0; row < area.height; ++row) {
            std::copy_n(GroupAlphaAt(request_, area, row), area.width, span.groupAlpha + std::size_t{row} * area.width);
        }
    }
    return true;
}

template <typename Traits>
void SpanPainter<Traits>::ScatterGroupAlpha(const PaintArea& area, const Span<Traits>& span) const {
    if constexpr (Traits::kGroup) {
        if (area.height == 1) return;
        for (unsigned int row = 0; row < area.height; ++row) {
            std::copy_n(span.groupAlpha + std::size_t{row} * area.width, area.width, GroupAlphaAt(request_, area, row));
        }
    }
}

/// A single pixel is done before a vector would be filled.
template <typename Traits>
CompositeStage SpanPainter<Traits>::StageFor(std::size_t pixels) const {
    return pixels == 1 ? ScalarStages().Of(kernel_.mode, form_, kernel_.colors) : stage_;
}

/// Runs the span through the compositing stage, the target packed before and written after where it does not lie packed
/// in memory. Without colours there is nothing to read or write: only the group's alphas are kept up to date.
template <typename Traits>
void SpanPainter<Traits>::Composite(const PaintArea& area, Span<Traits>& span) const {
    CompositeSpan& composite = span.composite;
    const CompositeStage stage = StageFor(composite.count);
    composite.target = span.target;
    if (!kernel_.hasColors) {
        std::memset(span.target, 0, composite.count * kPackedBytes);
        std::memset(span.snapshot, 0, composite.count * kPackedBytes);
        composite.snapshot = span.snapshot;
        stage(composite);
        return;
    }
    const auto target = At(targetRows_, kernel_.targetBytes, area.targetX, area.targetY, area);
    if constexpr (Traits::kGroup) {
        composite.snapshot =
            Pack(kernel_.destination, kernel_.targetPacked,
                 At(*snapshotRows_, kernel_.targetBytes, area.targetX, area.targetY, area), area.width, span.snapshot);
    }
    if (kernel_.targetPacked && area.height == 1) {
        composite.target = target.first;
        stage(composite);
        return;
    }
    const SpanCodec& codec = ActiveSpanCodecs().Of(kernel_.destination);
    codec.read(target, area.width, span.target);
    stage(composite);
    codec.write(target, area.width, span.target, WrittenPixels(span));
}

/// The pixels that a stage wrote, for formats whose bytes would not survive being read and stored. They are opaque, so
/// that no result alpha is 0.
template <typename Traits>
const unsigned char* SpanPainter<Traits>::WrittenPixels(Span<Traits>& span) const {
    const CompositeSpan& composite = span.composite;
    if (!FactsOf(kernel_.destination).lossy || Traits::kGroup || !HasAlpha(kernel_.source)) return composite.select;
    const auto alpha = [&](std::size_t i) { return composite.source[i * kPackedBytes + 3]; };
    if (composite.select == nullptr) {
        for (std::size_t i = 0; i < composite.count; ++i) span.select[i] = alpha(i);
    } else {
        for (std::size_t i = 0; i < composite.count; ++i) span.select[i] = composite.select[i] != 0 ? alpha(i) : 0;
    }
    return span.select;
}

/// Replaces the selected target pixels by the source's colours: Normal over nothing gives the source as it reads.
template <typename Traits>
void SpanPainter<Traits>::CopyThroughColor(const PaintArea& area, Span<Traits>& span) const {
    CompositeSpan composite = span.composite;
    const bool premultiplied = HasAlpha(kernel_.destination) && kernel_.colors == PackedColors::Premultiplied;
    std::memset(span.target, 0, composite.count * kPackedBytes);
    composite.target = span.target;
    composite.select = nullptr;
    ActiveStages().Of(BlendMode::Normal, CompositeForm::Plain,
                      premultiplied ? PackedColors::Premultiplied : PackedColors::Straight)(composite);
    ActiveSpanCodecs()
        .Of(kernel_.destination)
        .write(At(targetRows_, kernel_.targetBytes, area.targetX, area.targetY, area), area.width, span.target,
               span.composite.select);
}

template class SpanPainter<PDFBlend::BlendingTraits>;
template class SpanPainter<PDFBlend::GroupBlendingTraits>;

}  // namespace vantu
