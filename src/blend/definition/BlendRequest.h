#pragma once

#include <vantu/IPDFImageBlender.h>
#include <vantu/IPDFTransferFunction.h>

#include <algorithm>
#include <memory>

#include "blend/definition/GroupAlphas.h"

namespace vantu {

namespace PDFBlend {

/// Painting outside any transparency group.
struct BlendingTraits {
    static constexpr bool kGroup = false;
};

/// Painting into an open transparency group.
struct GroupBlendingTraits {
    static constexpr bool kGroup = true;
};

}  // namespace PDFBlend

/// What one `Blend` hands to its kernel; everything is borrowed for the call.
struct BlendRequestBase {
    const IPDFImageBlender::Coverage* coverage;  ///< the ranges that are painted
    const Point<int, 2>* offset;
    const std::shared_ptr<IQorImage>* mask;                     ///< may hold nothing
    const std::shared_ptr<IPDFTransferFunction>* maskTransfer;  ///< may hold nothing
    const Point<int, 2>* maskOffset;
    const unsigned char* alpha;  ///< constant alpha
    bool foreign = false;        ///< the kernel may be one of other formats than the images'
};

/// Rows of an image, from `first` to the one before `end`.
struct RowSpan {
    /// Adds rows, and those in between.
    void Add(unsigned int from, unsigned int to) {
        first = end == 0 ? from : std::min(first, from);
        end = std::max(end, to);
    }

    unsigned int first = 0;
    unsigned int end = 0;
};

template <typename Traits>
struct BlendRequest;

template <>
struct BlendRequest<PDFBlend::BlendingTraits> : BlendRequestBase {
    IPDFImageBlender::Coverage* blended;
};

template <>
struct BlendRequest<PDFBlend::GroupBlendingTraits> : BlendRequestBase {
    IQorImage* backdrop;        ///< the snapshot that `BeginGroup` took
    GroupAlphas* groupAlpha;    ///< `GroupState::groupAlpha`
    bool* groupAlphaFits;       ///< `GroupState::groupAlphaFits`
    RowSpan* paintedRows;       ///< `GroupState::paintedRows`
    const unsigned int* width;  ///< of the group image
    const bool* knockout;
    IPDFImageBlender::Coverage* blended;
};

/// Whether a mask is a stencil, read bit by bit: 0 paints, 1 protects. Any other mask is a soft mask.
inline bool IsStencil(PixelFormat format, const IPDFTransferFunction* transfer) {
    return format == PixelFormat::Index1 &&
           (transfer == nullptr || (transfer->GetType() == IPDFTransferFunction::Type::Identity &&
                                    transfer->GetSourceType() == IPDFTransferFunction::SourceType::Alpha));
}
/// Whether the request's mask is one.
inline bool HasStencil(const BlendRequestBase& request) {
    return IsStencil((*request.mask)->GetPixelFormat(), request.maskTransfer->get());
}

}  // namespace vantu
