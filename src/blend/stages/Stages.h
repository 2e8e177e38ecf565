#pragma once

#include <vantu/BlendMode.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel/Spans.h"

namespace vantu {

/// A span of packed pixels that a compositing stage paints, or that the end of a group resolves; for that the target,
/// the snapshot and group alphas of any size are all there is. It may be several rows of pixels that all are painted by
/// the source's alphas: there is no opacity and no select then. Nothing overlaps.
struct CompositeSpan {
    /// Leaves out the rows before one.
    void GoToRow(std::size_t row) {
        rows -= row;
        target += targetStep * static_cast<std::int64_t>(row);
        source += sourceStep * static_cast<std::int64_t>(row);
        if (snapshot != nullptr) snapshot += targetStep * static_cast<std::int64_t>(row);
        groupAlpha += groupAlphaStep * row;
    }
    /// The rest of the rows, from one on.
    [[nodiscard]] CompositeSpan FromRow(std::size_t row) const {
        CompositeSpan rest = *this;
        rest.GoToRow(row);
        return rest;
    }
    /// Outside groups, without opacity: the rest of each row, from a pixel on.
    [[nodiscard]] CompositeSpan FromPixel(std::size_t x) const {
        CompositeSpan rest = *this;
        rest.count -= x;
        rest.target += x * kPackedBytes;
        rest.source += x * kPackedBytes;
        if (select != nullptr) rest.select += x;
        return rest;
    }

    unsigned char* target;          ///< read and, where a pixel is written, replaced
    const unsigned char* source;    ///< premultiplied
    const unsigned char* opacity;   ///< effective source alpha per pixel; null: alpha * source alpha / 255
    const unsigned char* select;    ///< pixels that are painted at all, not 0; null: all
    const unsigned char* snapshot;  ///< groups: the target when the group was opened
    std::uint32_t* groupAlpha;      ///< groups: read and raised; every entry is at most 255
    std::size_t count;              ///< pixels of a row
    std::uint32_t alpha;            ///< constant alpha, 1 to 255
    bool keepClear;                 ///< outside groups: leave a pixel whose result alpha is 0
    bool stencil;                   ///< groups: the alpha rules of a stencil
    std::size_t rows = 1;
    std::int64_t targetStep = 0;  ///< bytes from one row to the next, of the snapshot, too
    std::int64_t sourceStep = 0;
    std::size_t groupAlphaStep = 0;  ///< groups: entries from one row to the next
};

using CompositeStage = void (*)(const CompositeSpan& span);

/// How a span meets what is there.
enum class CompositeForm { Plain, Group, Knockout };

/// A span of a soft mask, to be turned into effective source alphas. Opacities are 0 to 1, give or take a thousandth.
struct MaskSpan {
    const double* opacity;          ///< outside groups: the mask's opacity per pixel
    const unsigned char* maskByte;  ///< in groups: the same cut to 8 bits
    const unsigned char* source;    ///< packed pixels
    unsigned char* effective;       ///< out: effective source alpha per pixel
    std::size_t count;
    std::uint32_t alpha;  ///< constant alpha
};

using MaskStage = void (*)(const MaskSpan& span);

/// The stages: compositing by mode, form and by what the target's colour bytes are, soft masks, and what the end of a
/// group makes of premultiplied pixels.
struct BlendStages {
    [[nodiscard]] CompositeStage Of(BlendMode mode, CompositeForm form, PackedColors target) const {
        return entries[static_cast<std::size_t>(mode)][static_cast<std::size_t>(form)]
                      [static_cast<std::size_t>(target)];
    }

    std::array<std::array<std::array<CompositeStage, 2>, 3>, kBlendModeCount> entries;
    MaskStage plainMask;
    MaskStage groupMask;
    CompositeStage removeBackdrop;
    CompositeStage rescaleToGroupAlpha;
    CompositeStage mixWithBackdrop;
};

/// The stages as plain loops over the steps that define them.
const BlendStages& ScalarStages();

/// The fastest stages that this machine runs; chosen at first use.
const BlendStages& ActiveStages();

}  // namespace vantu
