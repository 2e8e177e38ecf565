#include "blend/kernels/ImagePainter.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <optional>

#include "blend/RangeWalk.h"
#include "blend/kernels/SoftMaskReader.h"
#include "blend/kernels/Stages.h"
#include "blend/kernels/SurfacePainter.h"
#include "pixel/FormatDispatch.h"
#include "pixel/Spans.h"

namespace vantu {
namespace {

using PDFBlend::BlendingTraits;
using PDFBlend::GroupBlendingTraits;

/// Pixels of a span that is converted or masked on the way: its buffers stay in the first cache.
constexpr unsigned int kSpanPixels = 512;

template <typename Byte>
RowsFromTop<Byte> RowsOf(Byte* block, const IQorImage& image) {
    return {
        block, image.GetWidth(), image.GetHeight(), image.GetPixelFormat(), image.GetAlignment(), image.IsBottomUp()};
}

/// Whether two images share bytes of their blocks.
bool Overlap(const IQorImage& a, const IQorImage& b) {
    const auto size = [](const IQorImage& image) {
        return std::size_t{RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment())} *
               image.GetHeight();
    };
    const std::less<const unsigned char*> before;
    const unsigned char* const pa = a.GetPixelData();
    const unsigned char* const pb = b.GetPixelData();
    return pa != nullptr && pb != nullptr && before(pa, pb + size(b)) && before(pb, pa + size(a));
}

/// The rows behind an accessor record of pixels of format `format` themselves; nothing if it goes through a palette.
std::optional<RowsFromTop<const unsigned char>> DirectRows(const DynamicAccessor& record, PixelFormat format,
                                                           const RowsFromTop<unsigned char>& like) {
    const unsigned char* const pixels =
        DispatchFormat<const unsigned char*>(format, nullptr, [&]<PixelFormat F>() -> const unsigned char* {
            const auto* const view = dynamic_cast<const Accessor<F>*>(record.accessor.get());
            return view != nullptr && view->rowStep == like.rowStep ? view->pixels : nullptr;
        });
    if (pixels == nullptr) return std::nullopt;
    RowsFromTop<const unsigned char> rows(pixels, 0, 0, format, 0, false);
    rows.rowStep = like.rowStep;
    return rows;
}

/// The painted pixels of a stencil, not 0, by its bits: 0 paints.
enum class StencilSpan { Nothing, Everything, Some };

StencilSpan ReadStencil(const unsigned char* row, unsigned int x, std::size_t count, unsigned char* select) {
    std::size_t painted = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t position = x + i;
        select[i] = static_cast<unsigned char>(~row[position >> 3] >> (7 - (position & 7)) & 1);
        painted += select[i];
    }
    if (painted == 0) return StencilSpan::Nothing;
    return painted == count ? StencilSpan::Everything : StencilSpan::Some;
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
          targetRows_(RowsOf(destination.GetPixelData(), destination)),
          sourceRows_(RowsOf(source.GetPixelData(), source)),
          sourceCodec_(SpanCodecOf(kernel.source)),
          targetCodec_(HasColors(kernel.destination) ? &SpanCodecOf(kernel.destination) : nullptr),
          form_(targetCodec_ != nullptr ? targetCodec_->form : PackedForm::Straight),
          inOrder_(Overlap(destination, source)) {
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
        const auto inOrder = [&](const PaintArea& piece, unsigned int, unsigned int) {
            PixelLoopsOf<Traits>(kernel_.mode).rect(PixelContext(), piece);
        };
        if (inOrder_) {
            inOrder(area, 0, 0);
        } else {
            PaintSpans(
                area, kernel_.keepClear, [](unsigned int, unsigned int, Span&) { return true; }, inOrder);
        }
    }

    void Masked(const PaintArea& area, unsigned int maskX, unsigned int maskY) {
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
            const auto rows = RowsOf(mask.GetPixelData(), mask);
            PaintSpans(
                area, true,
                [&](unsigned int i, unsigned int j, Span& span) {
                    const auto painted = ReadStencil(rows.Row(maskY + j), maskX + i, span.composite.count, span.select);
                    span.painted = painted != StencilSpan::Nothing;
                    span.copy = !Traits::kGroup && kernel_.mode == BlendMode::Normal && span.composite.alpha == 255;
                    span.composite.stencil = true;
                    if (painted == StencilSpan::Some) span.composite.select = span.select;
                    return true;
                },
                inOrder);
        } else {
            SoftMaskReader reader(mask, *transfer, *request_.alpha, Traits::kGroup);
            PaintSpans(
                area, true,
                [&](unsigned int i, unsigned int j, Span& span) {
                    span.composite.opacity = span.opacity;
                    return reader.Read(maskX + i, maskY + j, span.composite.count, span.composite.source, span.opacity);
                },
                inOrder);
        }
    }

private:
    /// Buffers and pointers of the span at hand.
    struct Span {
        CompositeSpan composite{};
        bool painted = true;  ///< whether any pixel of the span is painted
        bool copy = false;    ///< the source replaces the target
        alignas(64) unsigned char source[kSpanPixels * kPackedBytes];
        alignas(64) unsigned char target[kSpanPixels * kPackedBytes];
        alignas(64) unsigned char snapshot[kSpanPixels * kPackedBytes];
        alignas(64) unsigned char opacity[kSpanPixels];
        alignas(64) unsigned char select[kSpanPixels];
    };

    /// Runs every span of an area through the stages. `mask(i, j, span)` adds what the mask has to say of the span that
    /// starts at pixel (i, j) of the area; if it answers that an opacity does not fit the stages, `inOrder(piece, i,
    /// j)` paints that piece instead.
    template <typename Mask, typename InOrder>
    void PaintSpans(const PaintArea& area, bool keepClear, Mask mask, InOrder inOrder) {
        if (!Traits::kGroup && targetCodec_ == nullptr) return;  // nothing of it could be seen
        Span span;
        span.composite.alpha = *request_.alpha;
        span.composite.keepClear = keepClear;
        for (unsigned int j = 0; j < area.height; ++j) {
            for (unsigned int i = 0; i < area.width; i += kSpanPixels) {
                const unsigned int count = std::min(kSpanPixels, area.width - i);
                const PaintArea piece{area.targetX + static_cast<int>(i),
                                      area.targetY + static_cast<int>(j),
                                      area.sourceX + static_cast<int>(i),
                                      area.sourceY + static_cast<int>(j),
                                      count,
                                      1};
                CompositeSpan& composite = span.composite;
                composite.count = count;
                composite.opacity = nullptr;
                composite.select = nullptr;
                composite.source = Pack(sourceCodec_, sourceRows_, piece.sourceX, piece.sourceY, count, span.source);
                if (!mask(i, j, span) || !AttachGroupAlpha(composite, piece)) {
                    inOrder(piece, i, j);
                } else if (span.painted) {
                    PaintSpan(piece, span);
                }
            }
        }
    }

    /// @return false if an entry is above 255, as an opacity outside 0 to 1 may have left it.
    bool AttachGroupAlpha(CompositeSpan& span, const PaintArea& piece) const {
        if constexpr (Traits::kGroup) {
            const auto x = static_cast<unsigned int>(piece.targetX);
            const auto y = static_cast<unsigned int>(piece.targetY);
            span.groupAlpha = request_.groupAlpha->data() + std::size_t{*request_.width} * y + x;
            std::uint32_t all = 0;
            for (std::size_t i = 0; i < span.count; ++i) all |= span.groupAlpha[i];
            return all <= 255;
        }
        return true;
    }

    void PaintSpan(const PaintArea& piece, Span& span) {
        CompositeSpan& composite = span.composite;
        const auto x = static_cast<unsigned int>(piece.targetX);
        const auto y = static_cast<unsigned int>(piece.targetY);
        if (span.copy) {
            CopyThroughColor(span, x, y);
            return;
        }
        if (targetCodec_ == nullptr) {
            std::memset(span.target, 0, composite.count * kPackedBytes);
            std::memset(span.snapshot, 0, composite.count * kPackedBytes);
            composite.target = span.target;
            composite.snapshot = span.snapshot;
            stage_(composite);
            return;
        }
        unsigned char* const pixels = TargetPixels(x, y);
        if constexpr (Traits::kGroup) {
            composite.snapshot =
                Pack(*targetCodec_, *snapshotRows_, piece.targetX, piece.targetY, composite.count, span.snapshot);
        }
        if (targetCodec_->inPlace) {
            composite.target = pixels;
            stage_(composite);
            return;
        }
        composite.target = span.target;
        targetCodec_->read(pixels, span.target, composite.count);
        stage_(composite);
        targetCodec_->write(pixels, span.target, WrittenPixels(span), composite.count);
    }

    /// The pixels that a stage wrote, for formats whose bytes would not survive being read and stored. They are opaque,
    /// so that no result alpha is 0.
    const unsigned char* WrittenPixels(Span& span) const {
        const CompositeSpan& composite = span.composite;
        if (!targetCodec_->keepsUnwritten || Traits::kGroup) return composite.select;
        for (std::size_t i = 0; i < composite.count; ++i) {
            const bool selected = composite.select == nullptr || composite.select[i] != 0;
            span.select[i] = selected && composite.source[i * kPackedBytes + 3] != 0;
        }
        return span.select;
    }

    /// Replaces the selected target pixels by the source's colours: Normal over nothing gives the source as it reads.
    void CopyThroughColor(Span& span, unsigned int x, unsigned int y) {
        if (targetCodec_ == nullptr) return;
        CompositeSpan composite = span.composite;
        const unsigned char* const select = composite.select;
        const bool premultiplied = HasAlpha(kernel_.destination) && form_ == PackedForm::Premultiplied;
        std::memset(span.target, 0, composite.count * kPackedBytes);
        composite.target = span.target;
        composite.select = nullptr;
        composite.opacity = nullptr;
        ActiveStages().Of(BlendMode::Normal, CompositeForm::Plain,
                          premultiplied ? PackedForm::Premultiplied : PackedForm::Straight)(composite);
        targetCodec_->write(TargetPixels(x, y), span.target, select, composite.count);
    }

    /// `count` packed pixels from (x, y) on: where they lie if they are packed there, else in `buffer`.
    template <typename Byte>
    static const unsigned char* Pack(const SpanCodec& codec, const RowsFromTop<Byte>& rows, int x, int y,
                                     std::size_t count, unsigned char* buffer) {
        const unsigned char* const pixels =
            rows.Row(static_cast<unsigned int>(y)) + std::size_t{static_cast<unsigned int>(x)} * codec.bytesPerPixel;
        if (codec.inPlace) return pixels;
        codec.read(pixels, buffer, count);
        return buffer;
    }

    [[nodiscard]] unsigned char* TargetPixels(unsigned int x, unsigned int y) const {
        return targetRows_.Row(y) + std::size_t{x} * targetCodec_->bytesPerPixel;
    }

    /// What the pixel loops work on, made when first needed.
    PixelLoopContext<Traits> PixelContext() {
        if (!targetColors_) targetColors_ = MakeDirectAccessor(destination_);
        if (!sourceColors_) sourceColors_ = MakeConstDirectAccessor(source_);
        if (!targetColors_ || !sourceColors_) throw std::bad_alloc();
        return {PixelTarget(*targetColors_), *sourceColors_, request_, kernel_.keepClear};
    }

    const PaintKernel& kernel_;
    const BlendRequest<Traits>& request_;
    IQorImage& destination_;
    const IQorImage& source_;
    RowsFromTop<unsigned char> targetRows_;
    RowsFromTop<const unsigned char> sourceRows_;
    std::optional<RowsFromTop<const unsigned char>> snapshotRows_;
    const SpanCodec& sourceCodec_;
    const SpanCodec* targetCodec_;  ///< null for a destination without colours
    PackedForm form_;
    bool inOrder_;
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
