#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "blend/definition/BlendRequest.h"
#include "blend/painting/SpanPlan.h"
#include "blend/stages/MaskStages.h"
#include "blend/stages/Stages.h"
#include "pixel/PixelRows.h"
#include "pixel/Spans.h"

namespace vantu {

/// What is to be done with a span.
enum class Verdict {
    Skip,       ///< nothing of it is painted
    Composite,  ///< the stages paint it
    Copy,       ///< the source replaces the target
    InOrder,    ///< an alpha does not fit the stages: the pixel loops paint it
};

/// Buffers and pointers of the span at hand.
template <typename Traits>
struct Span {
    CompositeSpan composite{};
    alignas(64) unsigned char source[kSpanPixels * kPackedBytes];
    alignas(64) unsigned char target[kSpanPixels * kPackedBytes];
    alignas(64) unsigned char snapshot[kSpanPixels * kPackedBytes];
    alignas(64) unsigned char opacity[kSpanPixels];
    alignas(64) unsigned char select[kSpanPixels];
    alignas(64) std::uint32_t groupAlpha[Traits::kGroup ? kSpanPixels : 1];
};

/// Paints spans of a call: reads the source, composites, writes the target. Spans of one row of pixels that lie packed
/// in memory are worked on where they are.
template <typename Traits>
class SpanPainter {
public:
    SpanPainter(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                const BlendRequest<Traits>& request);

    /// Rows of pixels of the kernel's formats, from the top.
    [[nodiscard]] const PixelRows<unsigned char>& Target() const { return targetRows_; }
    [[nodiscard]] const PixelRows<const unsigned char>& Source() const { return sourceRows_; }
    /// Whether spans of a group can be painted: whether its snapshot holds pixels of the destination's format.
    [[nodiscard]] bool HasSnapshot() const { return snapshotRows_.has_value(); }

    /// Starts a span: the source pixels of an area, and no mask.
    void Start(const PaintArea& area, Span<Traits>& span) const;

    /// Paints a span that was started and went through its mask.
    /// @return false, with nothing painted, if the pixel loops have to paint it.
    bool Paint(const PaintArea& area, Verdict verdict, Span<Traits>& span) const;

    /// Whether pixels can be mixed where they lie: those of Normal outside groups between images of packed pixels.
    [[nodiscard]] bool CanMix() const {
        return !Traits::kGroup && kernel_.mode == BlendMode::Normal && kernel_.inPlace;
    }
    /// The rows of an area of such pixels.
    [[nodiscard]] MixedRows RowsToMix(const PaintArea& area) const;

    /// Paints an area of packed pixels where they lie, without a mask.
    /// @return false, with nothing painted, if the pixel loops have to paint it.
    bool PaintInPlace(const PaintArea& area) const;

    /// Copies the source's bytes, of images of one format.
    void CopyRows(const PaintArea& area) const;

private:
    bool GatherGroupAlpha(const PaintArea& area, Span<Traits>& span) const;
    void ScatterGroupAlpha(const PaintArea& area, const Span<Traits>& span) const;
    void Composite(const PaintArea& area, Span<Traits>& span) const;
    [[nodiscard]] CompositeStage StageFor(std::size_t pixels) const;
    const unsigned char* WrittenPixels(Span<Traits>& span) const;
    void CopyThroughColor(const PaintArea& area, Span<Traits>& span) const;

    const PaintKernel& kernel_;
    const BlendRequest<Traits>& request_;
    PixelRows<unsigned char> targetRows_;
    PixelRows<const unsigned char> sourceRows_;
    std::optional<PixelRows<const unsigned char>> snapshotRows_;
    CompositeForm form_ = CompositeForm::Plain;
    CompositeStage stage_;
};

}  // namespace vantu
