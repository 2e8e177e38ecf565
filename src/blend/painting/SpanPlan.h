#pragma once

#include <vantu/BlendMode.h>
#include <vantu/IQorImage.h>

#include <cstdint>

#include "blend/definition/RangeWalk.h"
#include "pixel/Formats.h"

namespace vantu {

/// The combination that a kernel object stands for, and what follows from it.
struct PaintKernel {
    PixelFormat destination;
    PixelFormat source;
    BlendMode mode;
    bool keepClear;  ///< without a mask, leave a pixel whose result alpha is 0 as it is

    bool hasColors = HasColors(destination);  ///< whether there are pixels to paint on
    bool inPlace = IsPacked(source) && IsPacked(destination);
    /// Whether outside groups at full alpha the source's bytes replace the target's as they are.
    bool copiesBytes =
        mode == BlendMode::Normal && destination == source && !HasAlpha(source) && !FactsOf(source).lossy;
    unsigned int targetBits = BitsPerPixel(destination);
    unsigned int sourceBits = BitsPerPixel(source);
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
    unsigned char alpha;  ///< constant alpha
    bool group;
    bool inOrder;  ///< the order of the pixels can be seen
};

/// How an area is painted.
struct SpanPlan {
    enum class Way {
        Nothing,  ///< not at all: nothing of it could be seen
        InOrder,  ///< by the pixel loops
        Copy,     ///< by copying the source's bytes row by row
        Spans,    ///< by the stages, `rows` rows of at most `width` pixels at a time
    };

    Way way;
    PaintArea area;  ///< the same pixels, perhaps as one row
    unsigned int width;
    unsigned int rows;
};

SpanPlan PlanSpans(const PaintArea& area, MaskKind mask, const PaintCall& call);

}  // namespace vantu
