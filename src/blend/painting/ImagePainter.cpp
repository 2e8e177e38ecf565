#include "blend/painting/ImagePainter.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

#include "blend/definition/PixelLoops.h"
#include "blend/painting/ImageMemory.h"
#include "blend/painting/SoftMaskReader.h"
#include "blend/painting/SpanPainter.h"
#include "blend/painting/StencilReader.h"

namespace vantu {
namespace {

MaskKind KindOfMask(const MaskPixels& mask, const IPDFTransferFunction* transfer) {
    if (mask.rows.InMemoryOrder().first == nullptr || BitsPerPixel(mask.format) == 0) return MaskKind::Other;
    if (IsStencil(mask.format, transfer)) return MaskKind::Stencil;
    return transfer != nullptr && IsOwnTransferFunction(*transfer) ? MaskKind::Soft : MaskKind::Other;
}

/// A part of an area, from its pixel (x, y) on.
PaintArea PartOf(const PaintArea& area, unsigned int x, unsigned int y, unsigned int width, unsigned int height) {
    const auto right = static_cast<int>(x), down = static_cast<int>(y);
    return {area.targetX + right, area.targetY + down, area.sourceX + right, area.sourceY + down, width, height};
}

/// Paints the rectangles of one call as spans, or pixel by pixel where the order of the pixels can be seen.
template <typename Traits>
class ImageLoops {
public:
    ImageLoops(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
               const BlendRequest<Traits>& request)
        : kernel_(kernel),
          request_(request),
          destination_(destination),
          source_(source),
          painter_(kernel, destination, source, request) {
        if (*request.mask) mask_.emplace(**request.mask);
        inOrder_ = request.foreign || (Traits::kGroup && !painter_.HasSnapshot()) ||
                   Overlap(painter_.Target(), painter_.Source()) || (mask_ && Overlap(painter_.Target(), mask_->rows));
        if (mask_ && !inOrder_) maskKind_ = KindOfMask(*mask_, request.maskTransfer->get());
    }

    void Rect(const PaintArea& area) {
        Paint(area, MaskKind::None, Unmasked, [this](const PaintArea& piece, unsigned int, unsigned int) {
            PixelLoopsOf(kernel_.mode, request_).rect(PixelContext(), piece);
        });
    }

    void Masked(const PaintArea& area, unsigned int maskX, unsigned int maskY) {
        switch (maskKind_) {
            case MaskKind::Stencil: return ThroughStencil(area, maskX, maskY);
            case MaskKind::Soft: return ThroughSoftMask(area, maskX, maskY);
            default: return Paint(area, MaskKind::Other, Unmasked, MaskedInOrder(maskX, maskY));
        }
    }

private:
    using Span = vantu::Span<Traits>;
    static_assert(kSpanPixels <= SoftMaskReader::kMostPixels);

    void ThroughStencil(const PaintArea& area, unsigned int maskX, unsigned int maskY) {
        const PixelRows<const unsigned char>& bits = mask_->rows;
        const auto from = [&](unsigned int y, unsigned int height) {
            return PixelRows<const unsigned char>{bits.Row(y), bits.step, height};
        };
        const auto mix = [&](const MixedRows& rows, unsigned int x, unsigned int y) {
            const auto height = static_cast<unsigned int>(rows.target.count);
            return ActiveMaskStages().byBits(rows, from(maskY + y, height), maskX + x, *request_.alpha);
        };
        const bool copies = !Traits::kGroup && kernel_.mode == BlendMode::Normal && *request_.alpha == 255;
        MixOrPaint(area, mix, [&](const PaintArea& part, unsigned int x, unsigned int y) {
            const auto readMask = [&](const PaintArea& piece, unsigned int i, unsigned int j, Span& span) {
                span.composite.stencil = true;
                const Painted painted =
                    ReadStencil(from(maskY + y + j, piece.height), maskX + x + i, piece.width, span.select);
                if (painted == Painted::Nothing) return Verdict::Skip;
                if (painted == Painted::Some) span.composite.select = span.select;
                return copies ? Verdict::Copy : Verdict::Composite;
            };
            Paint(part, MaskKind::Stencil, readMask, MaskedInOrder(maskX + x, maskY + y));
        });
    }

    void ThroughSoftMask(const PaintArea& area, unsigned int maskX, unsigned int maskY) {
        if (!reader_) reader_.emplace(*mask_, **request_.maskTransfer, *request_.alpha, Traits::kGroup);
        SoftMaskReader& reader = *reader_;
        reader.Expect(maskX, maskY, area.width, area.height, painter_.CanMix());
        const auto mix = [&](const MixedRows& rows, unsigned int x, unsigned int y) {
            return reader.Mix(rows, maskX + x, maskY + y);
        };
        MixOrPaint(area, mix, [&](const PaintArea& part, unsigned int x, unsigned int y) {
            const auto readMask = [&](const PaintArea& piece, unsigned int i, unsigned int j, Span& span) {
                span.composite.opacity = span.opacity;
                const bool fits = reader.Read(maskX + x + i, maskY + y + j, piece.width, piece.height,
                                              span.composite.source, span.opacity);
                return fits ? Verdict::Composite : Verdict::InOrder;
            };
            Paint(part, MaskKind::Soft, readMask, MaskedInOrder(maskX + x, maskY + y));
        });
    }

    /// Paints an area: by `mix(rows, x, y)` pixels that can be mixed, the first of them at (x, y), which tells how many
    /// it mixed, row by row; by `paint(part, x, y)` some pixels wherever that stops, more of them where it mixed none.
    template <typename MixRows, typename PaintPart>
    void MixOrPaint(const PaintArea& area, MixRows mix, PaintPart paint) const {
        if (!painter_.CanMix()) return paint(area, 0U, 0U);
        constexpr std::size_t few = 64;
        const auto cut = [](std::size_t count, unsigned int most) {
            return static_cast<unsigned int>(std::min<std::size_t>(count, most));
        };
        unsigned int x = 0, y = 0;
        const auto advance = [&](std::size_t pixels) {
            y += static_cast<unsigned int>((x + pixels) / area.width);
            x = static_cast<unsigned int>((x + pixels) % area.width);
        };
        for (std::size_t some = few; y < area.height;) {
            const PaintArea rest = PartOf(area, x, y, area.width - x, x == 0 ? area.height - y : 1);
            const std::size_t mixed = mix(painter_.RowsToMix(rest), x, y);
            if (x == 0 && mixed == std::size_t{rest.width} * rest.height) return;  // nearly always, without a division
            some = mixed == 0 ? 8 * some : few;
            advance(mixed);
            if (y == area.height) return;
            const bool wholeRows = x == 0 && some >= area.width;
            const PaintArea part = wholeRows ? PartOf(area, 0, y, area.width, cut(some / area.width, area.height - y))
                                             : PartOf(area, x, y, cut(some, area.width - x), 1);
            paint(part, x, y);
            advance(std::size_t{part.width} * part.height);
        }
    }

    /// Paints a piece of an area, the first pixel of which meets the mask at (maskX, maskY), pixel by pixel.
    auto MaskedInOrder(unsigned int maskX, unsigned int maskY) {
        return [this, maskX, maskY](const PaintArea& piece, unsigned int i, unsigned int j) {
            PixelLoopsOf(kernel_.mode, request_).PaintMasked(PixelContext(), piece, maskX + i, maskY + j);
        };
    }

    static Verdict Unmasked(const PaintArea&, unsigned int, unsigned int, Span&) { return Verdict::Composite; }

    /// A mode above 255 runs into the formats of the key and may select a kernel of other formats than the images'. It
    /// paints what it takes the pixels to be, as far as they lie inside the images.
    [[nodiscard]] bool Reachable(const PaintArea& area) const {
        return !request_.foreign ||
               (InsideMemory(source_, kernel_.source, area.sourceX, area.sourceY, area) &&
                (!HasColors(kernel_.destination) ||
                 InsideMemory(destination_, kernel_.destination, area.targetX, area.targetY, area)));
    }

    /// Paints an area as planned. `readMask(piece, i, j, span)` adds what the mask has to say of the piece whose first
    /// pixel is (i, j) of the area, `inOrder(piece, i, j)` paints one pixel by pixel.
    template <typename ReadMask, typename InOrder>
    void Paint(const PaintArea& area, MaskKind mask, ReadMask readMask, InOrder inOrder) {
        if (!Reachable(area)) return;
        if constexpr (Traits::kGroup) {
            const auto top = static_cast<unsigned int>(area.targetY);
            request_.paintedRows->Add(top, top + area.height);
        }
        const SpanPlan plan = PlanSpans(
            area, mask,
            {kernel_, painter_.Target().step, painter_.Source().step, *request_.alpha, GroupWidth(), inOrder_});
        switch (plan.way) {
            case SpanPlan::Way::Nothing: return;
            case SpanPlan::Way::InOrder: return inOrder(area, 0, 0);
            case SpanPlan::Way::Copy: return painter_.CopyRows(plan.area);
            case SpanPlan::Way::InPlace:
                if (!painter_.PaintInPlace(plan.area)) inOrder(area, 0, 0);
                return;
            case SpanPlan::Way::Spans: break;
        }
        Span span;
        span.composite.keepClear = mask != MaskKind::None || kernel_.keepClear;
        const PaintArea& whole = plan.area;
        const auto paintColumns = [&](unsigned int left, unsigned int right, unsigned int width, unsigned int rows) {
            for (unsigned int j = 0; j < whole.height; j += rows) {
                for (unsigned int i = left; i < right; i += width) {
                    const PaintArea piece =
                        PartOf(whole, i, j, std::min(width, right - i), std::min(rows, whole.height - j));
                    painter_.Start(piece, span);
                    if (!painter_.Paint(piece, readMask(piece, i, j, span), span)) inOrder(piece, i, j);
                }
            }
        };
        // What rows have behind whole steps is painted several rows to a span.
        constexpr unsigned int step = 64;
        const unsigned int rest = plan.rows == 1 && whole.height > 1 ? whole.width % step : 0;
        const unsigned int end = whole.width - rest;
        paintColumns(0, end, plan.width, plan.rows);
        if (rest != 0) paintColumns(end, whole.width, rest, kSpanPixels / rest);
    }

    [[nodiscard]] std::optional<unsigned int> GroupWidth() const {
        if constexpr (Traits::kGroup) return *request_.width;
        return std::nullopt;
    }

    /// What the pixel loops work on, made when first needed.
    PixelLoopContext<Traits> PixelContext() {
        if (!targetColors_) targetColors_ = MakeDirectAccessor(destination_, kernel_.destination);
        if (!sourceColors_) sourceColors_ = MakeConstDirectAccessor(source_, kernel_.source);
        if constexpr (Traits::kGroup) {
            if (!snapshotColors_) snapshotColors_ = MakeAccessor(*request_.backdrop);
        }
        if (!targetColors_ || !sourceColors_ || (Traits::kGroup && !snapshotColors_)) throw std::bad_alloc();
        return {PixelTarget(*targetColors_), *sourceColors_, snapshotColors_.get(), request_, kernel_.keepClear};
    }

    const PaintKernel& kernel_;
    const BlendRequest<Traits>& request_;
    IQorImage& destination_;
    const IQorImage& source_;
    SpanPainter<Traits> painter_;
    std::optional<MaskPixels> mask_;
    MaskKind maskKind_ = MaskKind::Other;
    std::optional<SoftMaskReader> reader_;  ///< of a soft mask, made when first needed
    bool inOrder_;                          ///< the order of the pixels can be seen, or the formats may be foreign
    std::unique_ptr<DynamicAccessor> targetColors_;
    std::unique_ptr<DynamicAccessor> sourceColors_;
    std::unique_ptr<DynamicAccessor> snapshotColors_;  ///< in groups
};

}  // namespace

template <typename Traits>
bool PaintImage(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                const BlendRequest<Traits>& request) {
    if (destination.GetPixelData() == nullptr) return request.coverage->GetRanges().empty();
    ImageLoops<Traits> loops(kernel, destination, source, request);
    WalkRanges(request, loops);
    return true;
}

template bool PaintImage(const PaintKernel&, IQorImage&, const IQorImage&,
                         const BlendRequest<PDFBlend::BlendingTraits>&);
template bool PaintImage(const PaintKernel&, IQorImage&, const IQorImage&,
                         const BlendRequest<PDFBlend::GroupBlendingTraits>&);

}  // namespace vantu
