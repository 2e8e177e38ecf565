#pragma once

#include <vantu/BlendMode.h>
#include <vantu/IQorImage.h>

#include <cstdint>
#include <optional>

#include "blend/definition/RangeWalk.h"
#include "pixel/Formats.h"
#include "pixel/Spans.h"

namespace vantu {

/// The combination that a kernel object stands for, and what follows from it.
struct PaintKernel {
    PixelFormat destination;
    PixelFormat source;
    BlendMode mode;
    bool keepClear;  ///< without a mask, leave a pixel whose result alpha is 0 as it is

    bool hasColors = HasColors(destination);  ///< whether there are pixels to paint on
    /// What the target's colour bytes are.
    PackedColors colors =
        FactsOf(destination).colors == PixelColors::Straight ? PackedColors::Straight : PackedColors::Premultiplied;
    bool targetPacked = IsPacked(destination);
    bool sourcePacked = IsPacked(source);
    bool inPlace = targetPacked && sourcePacked;
    /// Whether outside groups at full alpha the source's bytes replace the target's as they are.
    bool copiesBytes =
        mode == BlendMode::Normal && destination == source && !HasAlpha(source) && !FactsOf(source).lossy;
    unsigned int targetBytes = BitsPerPixel(destination) / 8;
    unsigned int sourceBytes = BitsPerPixel(source) / 8;
};

/// Most pixels of a span: its buffers stay in the first cache.
inline constexpr unsigned int kSpanPixels = 512;

enum class MaskKind {
    None,
    Stencil,
    Soft,   ///< through a transfer function of the library's own
    Other,  ///< only the pixel loops know what to do with it
};

/// What the areas of a call have in common.
struct PaintCall {
    const PaintKernel& kernel;
    std::int64_t targetStep;  ///< bytes from one row of the destination to the next one down
    std::int64_t sourceStep;
    unsigned char alpha;                     ///< constant alpha
    std::optional<unsigned int> groupWidth;  ///< of the group's image; nothing outside groups
    bool inOrder;                            ///< the order of the pixels can be seen
};

/// How an area is painted.
struct SpanPlan {
    enum class Way {
        Nothing,  ///< not at all: nothing of it could be seen
        InOrder,  ///< by the pixel loops
        Copy,     ///< by copying the source's bytes row by row
        InPlace,  ///< by the stages, where the pixels lie
        Spans,    ///< by the stages, `rows` rows of at most `width` pixels at a time
    };

    Way way;
    PaintArea area;  ///< the same pixels, perhaps as one row
    unsigned int width;
    unsigned int rows;
};

/// The same pixels as one row, if the rows of target and source follow each other without gaps, and in a group those of
/// its alphas.
inline PaintArea RowsJoined(const PaintArea& area, const PaintCall& call) {
    constexpr std::uint64_t most = 1U << 30;
    const std::uint64_t pixels = std::uint64_t{area.width} * area.height;
    const bool gapless = call.targetStep == std::int64_t{area.width} * call.kernel.targetBytes &&
                         call.sourceStep == std::int64_t{area.width} * call.kernel.sourceBytes;
    if (call.groupWidth.value_or(area.width) != area.width || !gapless || pixels > most) return area;
    return {area.targetX, area.targetY, area.sourceX, area.sourceY, static_cast<unsigned int>(pixels), 1};
}

inline SpanPlan PlanSpans(const PaintArea& area, MaskKind mask, const PaintCall& call) {
    // Narrower rectangles are painted several rows to a span. Packed pixels gain from that only while a row is shorter
    // than a few vectors.
    constexpr unsigned int narrowPacked = 64;
    constexpr unsigned int narrow = 256;
    using Way = SpanPlan::Way;
    if (call.inOrder || mask == MaskKind::Other) return {Way::InOrder, area, area.width, area.height};
    if (!call.groupWidth && !call.kernel.hasColors) return {Way::Nothing, area, 0, 0};

    const PaintArea whole = mask == MaskKind::None ? RowsJoined(area, call) : area;
    const bool copies = call.kernel.copiesBytes && !call.groupWidth && call.alpha == 255;
    if (mask == MaskKind::None && copies) return {Way::Copy, whole, whole.width, 1};
    const bool packed = call.kernel.inPlace;
    const bool inPlace = packed && (!call.groupWidth || whole.width >= narrowPacked);
    if (mask == MaskKind::None && inPlace) return {Way::InPlace, whole, whole.width, whole.height};
    if (whole.width < (packed ? narrowPacked : narrow)) {
        return {Way::Spans, whole, whole.width, kSpanPixels / whole.width};
    }
    return {Way::Spans, whole, packed && mask == MaskKind::None ? whole.width : kSpanPixels, 1};
}

}  // namespace vantu
