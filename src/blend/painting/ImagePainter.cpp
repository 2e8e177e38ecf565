#include "blend/painting/ImagePainter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>

#include "blend/RangeWalk.h"
#include "blend/painting/ImageBlocks.h"
#include "blend/painting/SoftMaskReader.h"
#include "blend/painting/StencilReader.h"
#include "blend/painting/SurfacePainter.h"
#include "blend/stages/Stages.h"
#include "pixel/Spans.h"

namespace vantu {
namespace {

using PDFBlend::BlendingTraits;
using PDFBlend::GroupBlendingTraits;

/// Pixels of a span: its buffers stay in the first cache.
constexpr unsigned int kSpanPixels = SoftMaskReader::kMostPixels;

// Narrower rectangles are painted several rows to a span. Pixels that can be painted where they lie gain from that only
// while a row is shorter than a few vectors.
constexpr unsigned int kNarrowInPlace = 64;
constexpr unsigned int kNarrow = 256;

/// Most pixels that are taken for one row.
constexpr std::uint64_t kMostJoined = 1U << 30;

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
          targetRows_(RowsFromTop(destination, kernel.destination)),
          sourceRows_(RowsFromTop(source, kernel.source)),
          sourceCodec_(ActiveSpanCodecs().Of(kernel.source)),
          targetCodec_(HasColors(kernel.destination) ? &ActiveSpanCodecs().Of(kernel.destination) : nullptr),
          form_(targetCodec_ != nullptr ? targetCodec_->form : PackedForm::Straight),
          foreign_(kernel.destination != destination.GetPixelFormat() || kernel.source != source.GetPixelFormat()),
          inOrder_(foreign_ || Overlap(destination, source)) {
        CompositeForm composite = CompositeForm::Plain;
        if constexpr (Traits::kGroup) {
            composite = *request.knockout ? CompositeForm::Knockout : CompositeForm::Group;
            snapshotRows_ = DirectRows(*request.backdrop, kernel.destination, targetRows_);
            if (!snapshotRows_) inOrder_ = true;
        }
        stage_ = ActiveStages().Of(kernel.mode, composite, form_);
        if (const IQorImage* const mask = request.mask->get()) inOrder_ = inOrder_ || Overlap(destination, *mask);
    }

    void Rect(const PaintArea& area) {
        if (!Reachable(area)) return;
        const auto inOrder = [&](const PaintArea& piece, unsigned int, unsigned int) {
            PixelLoopsOf<Traits>(kernel_.mode).rect(PixelContext(), piece);
        };
        if (inOrder_) {
            inOrder(area, 0, 0);
        } else if (CopiesBytes()) {
            CopyRows(RowsJoined(area));
        } else {
            PaintSpans(
                RowsJoined(area), false, [](const Piece&, Span&) { return Verdict::Composite; }, inOrder);
        }
    }

    void Masked(const PaintArea& area, unsigned int maskX, unsigned int maskY) {
        if (!Reachable(area)) return;
        const IQorImage& mask = **request_.mask;
        const IPDFTransferFunction* const transfer = request_.maskTransfer->get();
        const auto inOrder = [&](const PaintArea& piece, unsigned int i, unsigned int j) {
            PaintMaskedPixels(PixelLoopsOf<Traits>(kernel_.mode), PixelContext(), piece, maskX + i, maskY + j);
        };
        const bool stencil = HasStencil(request_);
        const bool ownSoftMask = !stencil && transfer != nullptr && IsOwnTransferFunction(*transfer);
        if (inOrder_ || mask.GetPixelData() == nullptr || BitsPerPixel(mask.GetPixelFormat()) == 0 ||
            (!stencil && !ownSoftMask)) {
            inOrder(area, 0, 0);
        } else if (stencil) {
            const auto rows = RowsFromTop(mask, PixelFormat::Index1);
            PaintSpans(
                area, true,
                [&](const Piece& piece, Span& span) {
                    const bool copy =
                        !Traits::kGroup && kernel_.mode == BlendMode::Normal && span.composite.alpha == 255;
                    span.composite.stencil = true;
                    return ReadStencilRows(rows, maskX + piece.i, maskY + piece.j, piece.area, copy, span);
                },
                inOrder);
        } else {
            SoftMaskReader reader(mask, *transfer, *request_.alpha, Traits::kGroup,
                                  std::size_t{area.width} * area.height);
            PaintSpans(
                area, true,
                [&](const Piece& piece, Span& span) {
                    const std::size_t width = piece.area.width;
                    span.composite.opacity = span.opacity;
                    for (unsigned int row = 0; row < piece.area.height; ++row) {
                        if (!reader.Read(maskX + piece.i, maskY + piece.j + row, width,
                                         span.composite.source + row * width * kPackedBytes,
                                         span.opacity + row * width)) {
                            return Verdict::InOrder;
                        }
                    }
                    return Verdict::Composite;
                },
                inOrder);
        }
    }

private:
    /// A mode above 255 runs into the formats of the key and may select a kernel of other formats than the images'. It
    /// paints what it takes the pixels to be, as far as they lie inside the images.
    [[nodiscard]] bool Reachable(const PaintArea& area) const {
        if (!foreign_) return true;
        return InsideBlock(source_, kernel_.source, area.sourceX, area.sourceY, area) &&
               (targetCodec_ == nullptr ||
                InsideBlock(destination_, kernel_.destination, area.targetX, area.targetY, area));
    }

    /// Whether the source's bytes replace the target's as they are: Normal at full alpha between images of a format
    /// that has no alpha and stores channels whole.
    [[nodiscard]] bool CopiesBytes() const {
        return !Traits::kGroup && kernel_.mode == BlendMode::Normal && *request_.alpha == 255 &&
               kernel_.source == PixelFormat::Bgr24 && kernel_.destination == PixelFormat::Bgr24;
    }

    void CopyRows(const PaintArea& area) {
        const std::size_t bytes = std::size_t{area.width} * sourceCodec_.bytesPerPixel;
        for (int j = 0; j < static_cast<int>(area.height); ++j) {
            std::memcpy(At(targetRows_, *targetCodec_, area.targetX, area.targetY + j, area).first,
                        At(sourceRows_, sourceCodec_, area.sourceX, area.sourceY + j, area).first, bytes);
        }
    }

    /// The same pixels as one row, if the rows of target and source follow each other without gaps: outside groups, of
    /// which each row has its place among the group's alphas.
    [[nodiscard]] PaintArea RowsJoined(const PaintArea& area) const {
        const std::uint64_t pixels = std::uint64_t{area.width} * area.height;
        const auto gapless = [&](std::int64_t rowStep, const SpanCodec& codec) {
            return rowStep == static_cast<std::int64_t>(area.width * std::uint64_t{codec.bytesPerPixel});
        };
        if (Traits::kGroup || targetCodec_ == nullptr || pixels > kMostJoined ||
            !gapless(targetRows_.step, *targetCodec_) || !gapless(sourceRows_.step, sourceCodec_)) {
            return area;
        }
        PaintArea joined = area;
        joined.width = static_cast<unsigned int>(pixels);
        joined.height = 1;
        return joined;
    }

    /// What is to be done with a span.
    enum class Verdict {
        Skip,       ///< nothing of it is painted
        Composite,  ///< the stages paint it
        Copy,       ///< the source replaces the target
        InOrder,    ///< an alpha does not fit the stages: the pixel loops paint it
    };

    /// Buffers and pointers of the span at hand.
    struct Span {
        CompositeSpan composite{};
        alignas(64) unsigned char source[kSpanPixels * kPackedBytes];
        alignas(64) unsigned char target[kSpanPixels * kPackedBytes];
        alignas(64) unsigned char snapshot[kSpanPixels * kPackedBytes];
        alignas(64) unsigned char opacity[kSpanPixels];
        alignas(64) unsigned char select[kSpanPixels];
        alignas(64) std::uint32_t groupAlpha[Traits::kGroup ? kSpanPixels : 1];
    };

    /// The part of an area that makes one span, and where in the area it starts.
    struct Piece {
        PaintArea area;
        unsigned int i;
        unsigned int j;
    };

    /// Runs an area through the stages, a span of one row or of several narrow ones at a time. `mask(piece, span)` adds
    /// what the mask has to say and tells what is to be done; `inOrder(area, i, j)` paints a piece pixel by pixel.
    template <typename Mask, typename InOrder>
    void PaintSpans(const PaintArea& area, bool masked, Mask mask, InOrder inOrder) {
        if (!Traits::kGroup && targetCodec_ == nullptr) return;  // nothing of it could be seen
        Span span;
        CompositeSpan& composite = span.composite;
        composite.alpha = *request_.alpha;
        composite.keepClear = masked || kernel_.keepClear;
        const bool inPlace = sourceCodec_.inPlace && targetCodec_ != nullptr && targetCodec_->inPlace;
        const bool narrow = area.width < (inPlace ? kNarrowInPlace : kNarrow);
        const unsigned int width = narrow || (inPlace && !masked) ? area.width : kSpanPixels;
        const unsigned int rows = narrow ? kSpanPixels / area.width : 1;
        for (unsigned int j = 0; j < area.height; j += rows) {
            for (unsigned int i = 0; i < area.width; i += width) {
                const Piece piece{{area.targetX + static_cast<int>(i), area.targetY + static_cast<int>(j),
                                   area.sourceX + static_cast<int>(i), area.sourceY + static_cast<int>(j),
                                   std::min(width, area.width - i), std::min(rows, area.height - j)},
                                  i,
                                  j};
                composite.count = std::size_t{piece.area.width} * piece.area.height;
                composite.opacity = nullptr;
                composite.select = nullptr;
                composite.source = Pack(
                    sourceCodec_, At(sourceRows_, sourceCodec_, piece.area.sourceX, piece.area.sourceY, piece.area),
                    piece.area.width, span.source);
                Verdict verdict = mask(piece, span);
                if (verdict == Verdict::Composite && !GatherGroupAlpha(piece.area, span)) verdict = Verdict::InOrder;
                switch (verdict) {
                    case Verdict::Skip: break;
                    case Verdict::Composite: Composite(piece.area, span); break;
                    case Verdict::Copy: CopyThroughColor(piece.area, span); break;
                    case Verdict::InOrder: inOrder(piece.area, i, j); break;
                }
            }
        }
    }

    /// Reads the rows of a stencil under a piece into the span's selection.
    static Verdict ReadStencilRows(const PixelRows<const unsigned char>& mask, unsigned int x, unsigned int y,
                                   const PaintArea& area, bool copy, Span& span) {
        bool some = false;
        bool all = true;
        for (unsigned int row = 0; row < area.height; ++row) {
            const StencilRun run =
                ReadStencil(mask.Row(y + row), x, area.width, span.select + std::size_t{row} * area.width);
            some = some || run != StencilRun::Nothing;
            all = all && run == StencilRun::Everything;
        }
        if (!some) return Verdict::Skip;
        if (!all) span.composite.select = span.select;
        return copy ? Verdict::Copy : Verdict::Composite;
    }

    /// The group alphas of an area, whose entries lie row by row at the group image's width.
    std::uint32_t* GroupAlphaAt(const PaintArea& area, unsigned int row) const {
        return request_.groupAlpha->data() +
               std::size_t{*request_.width} * (static_cast<unsigned int>(area.targetY) + row) +
               static_cast<unsigned int>(area.targetX);
    }

    /// Makes the span work on its group alphas: in place for one row, else in a buffer.
    /// @return false if one is above 255, as an opacity outside 0 to 1 may have left it.
    bool GatherGroupAlpha(const PaintArea& area, Span& span) const {
        if constexpr (Traits::kGroup) {
            CompositeSpan& composite = span.composite;
            composite.groupAlpha = GroupAlphaAt(area, 0);
            if (area.height > 1) {
                composite.groupAlpha = span.groupAlpha;
                for (unsigned int row = 0; row < area.height; ++row) {
                    std::copy_n(GroupAlphaAt(area, row), area.width, span.groupAlpha + std::size_t{row} * area.width);
                }
            }
            std::uint32_t bits = 0;
            for (std::size_t i = 0; i < composite.count; ++i) bits |= composite.groupAlpha[i];
            return bits <= 255;
        }
        return true;
    }

    void ScatterGroupAlpha(const PaintArea& area, const Span& span) const {
        if constexpr (Traits::kGroup) {
            if (area.height == 1) return;
            for (unsigned int row = 0; row < area.height; ++row) {
                std::copy_n(span.groupAlpha + std::size_t{row} * area.width, area.width, GroupAlphaAt(area, row));
            }
        }
    }

    /// Runs the span through the compositing stage, the target packed before and written after where it does not lie
    /// packed in memory.
    void Composite(const PaintArea& area, Span& span) {
        CompositeSpan& composite = span.composite;
        if (targetCodec_ == nullptr) {
            std::memset(span.target, 0, composite.count * kPackedBytes);
            std::memset(span.snapshot, 0, composite.count * kPackedBytes);
            composite.target = span.target;
            composite.snapshot = span.snapshot;
            stage_(composite);
            ScatterGroupAlpha(area, span);
            return;
        }
        const auto target = At(targetRows_, *targetCodec_, area.targetX, area.targetY, area);
        if constexpr (Traits::kGroup) {
            composite.snapshot =
                Pack(*targetCodec_, At(*snapshotRows_, *targetCodec_, area.targetX, area.targetY, area), area.width,
                     span.snapshot);
        }
        const bool inPlace = targetCodec_->inPlace && area.height == 1;
        composite.target = inPlace ? target.first : span.target;
        if (!inPlace) targetCodec_->read({target.first, target.step, target.count}, area.width, span.target);
        stage_(composite);
        if (!inPlace) targetCodec_->write(target, area.width, span.target, WrittenPixels(span));
        ScatterGroupAlpha(area, span);
    }

    /// The pixels that a stage wrote, for formats whose bytes would not survive being read and stored. They are opaque,
    /// so that no result alpha is 0.
    const unsigned char* WrittenPixels(Span& span) const {
        const CompositeSpan& composite = span.composite;
        if (!targetCodec_->keepsUnwritten || Traits::kGroup || !HasAlpha(kernel_.source)) return composite.select;
        const auto alpha = [&](std::size_t i) { return composite.source[i * kPackedBytes + 3]; };
        if (composite.select == nullptr) {
            for (std::size_t i = 0; i < composite.count; ++i) span.select[i] = alpha(i);
        } else {
            for (std::size_t i = 0; i < composite.count; ++i) span.select[i] = composite.select[i] != 0 ? alpha(i) : 0;
        }
        return span.select;
    }

    /// Replaces the selected target pixels by the source's colours: Normal over nothing gives the source as it reads.
    void CopyThroughColor(const PaintArea& area, Span& span) {
        if (targetCodec_ == nullptr) return;
        CompositeSpan composite = span.composite;
        const bool premultiplied = HasAlpha(kernel_.destination) && form_ == PackedForm::Premultiplied;
        std::memset(span.target, 0, composite.count * kPackedBytes);
        composite.target = span.target;
        composite.select = nullptr;
        ActiveStages().Of(BlendMode::Normal, CompositeForm::Plain,
                          premultiplied ? PackedForm::Premultiplied : PackedForm::Straight)(composite);
        targetCodec_->write(At(targetRows_, *targetCodec_, area.targetX, area.targetY, area), area.width, span.target,
                            span.composite.select);
    }

    /// The pixels of an area's size from (x, y) on.
    template <typename Byte>
    static PixelRows<Byte> At(const PixelRows<Byte>& rows, const SpanCodec& codec, int x, int y,
                              const PaintArea& area) {
        Byte* const first =
            rows.Row(static_cast<unsigned int>(y)) + std::size_t{static_cast<unsigned int>(x)} * codec.bytesPerPixel;
        return {first, rows.step, area.height};
    }

    /// Packed pixels: where they lie if they are packed there, else in `buffer`.
    static const unsigned char* Pack(const SpanCodec& codec, const PixelRows<const unsigned char>& rows,
                                     std::size_t width, unsigned char* buffer) {
        if (codec.inPlace && rows.count == 1) return rows.first;
        codec.read(rows, width, buffer);
        return buffer;
    }

    /// What the pixel loops work on, made when first needed.
    PixelLoopContext<Traits> PixelContext() {
        if (!targetColors_) targetColors_ = MakeDirectAccessor(destination_, kernel_.destination);
        if (!sourceColors_) sourceColors_ = MakeConstDirectAccessor(source_, kernel_.source);
        if (!targetColors_ || !sourceColors_) throw std::bad_alloc();
        return {PixelTarget(*targetColors_), *sourceColors_, request_, kernel_.keepClear};
    }

    const PaintKernel& kernel_;
    const BlendRequest<Traits>& request_;
    IQorImage& destination_;
    const IQorImage& source_;
    PixelRows<unsigned char> targetRows_;
    PixelRows<const unsigned char> sourceRows_;
    std::optional<PixelRows<const unsigned char>> snapshotRows_;
    const SpanCodec& sourceCodec_;
    const SpanCodec* targetCodec_;  ///< null for a destination without colours
    PackedForm form_;
    bool foreign_;  ///< the kernel's formats are not the images'
    bool inOrder_;  ///< the order of the pixels can be seen, or the formats are foreign
    CompositeStage stage_;
    std::unique_ptr<DynamicAccessor> targetColors_;
    std::unique_ptr<DynamicAccessor> sourceColors_;
};

template <typename Traits>
bool Paint(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
           const BlendRequest<Traits>& request) {
    if (request.coverage->GetRanges().empty()) return true;
    if (destination.GetPixelData() == nullptr) return false;
    ImageLoops<Traits> loops(kernel, destination, source, request);
    WalkRanges(request, loops);
    return true;
}

}  // namespace

template <>
bool PaintImage(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                const BlendRequest<BlendingTraits>& request) {
    return Paint(kernel, destination, source, request);
}

template <>
bool PaintImage(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                const BlendRequest<GroupBlendingTraits>& request) {
    return Paint(kernel, destination, source, request);
}

}  // namespace vantu
