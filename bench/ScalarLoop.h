#pragma once

#include <vantu/ColorMap.h>
#include <vantu/IPDFTransferFunction.h>

#include <cstddef>
#include <cstdint>

#include "blend/definition/CompositeSteps.h"
#include "blend/stages/Stages.h"
#include "pixel/PixelCodec.h"

namespace vantu::bench {

enum class Loop { Rect, Stencil, SoftMask };

/// A square of pixels to paint; rows of every block follow each other without gaps.
struct ScalarTask {
    unsigned int size;
    const unsigned char* source;
    unsigned char* target;
    const unsigned char* snapshot;  ///< groups
    std::uint32_t* groupAlpha;      ///< groups
    const unsigned char* mask;      ///< a stencil's bits or a soft mask's palette indices
    const ColorMap* maskPalette;
    const IPDFTransferFunction* maskTransfer;
    std::uint32_t alpha;
};

using ScalarLoop = void (*)(const ScalarTask& task);

/// The plain loop that a careful programmer writes first, one pixel at a time over the steps that define the result.
template <BlendMode Mode, PixelFormat Dst, PixelFormat Src, Loop L, CompositeForm F>
void PaintScalar(const ScalarTask& task) {
    constexpr std::size_t targetBytes = BitsPerPixel(Dst) / 8;
    constexpr std::size_t sourceBytes = BitsPerPixel(Src) / 8;
    constexpr bool kCopies = Mode == BlendMode::Normal && L == Loop::Stencil && F == CompositeForm::Plain;
    constexpr bool kKeepsClear =
        L != Loop::Rect ||
        (Mode == BlendMode::Multiply && Dst == PixelFormat::Bgra32Premultiplied && Src == PixelFormat::Bgra32Inverted);
    const std::size_t pixels = std::size_t{task.size} * task.size;
    for (std::size_t i = 0; i < pixels; ++i) {
        if constexpr (L == Loop::Stencil) {
            if ((task.mask[i >> 3] >> (7 - (i & 7)) & 1) != 0) continue;
        }
        unsigned char* const target = task.target + i * targetBytes;
        Color cs;
        ReadPixel<Src>(task.source + i * sourceBytes, cs);
        if (kCopies && task.alpha == 255) {
            WritePixel<Dst>(target, cs);
            continue;
        }
        Color cd;
        ReadPixel<Dst>(target, cd);
        const std::uint32_t sa = cs.GetAlpha();
        std::uint32_t as = 0;
        if constexpr (L == Loop::SoftMask) {
            const double t = task.maskTransfer->ComputeAlpha((*task.maskPalette)[task.mask[i]]);
            as = F == CompositeForm::Plain ? PlainMaskOpacity(task.alpha, sa, t)
                                           : GroupMaskOpacity(task.alpha, sa, GroupMaskByte(t));
        } else {
            as = ConstantOpacity(task.alpha, sa);
        }
        bool write = true;
        if constexpr (F == CompositeForm::Plain) {
            if (sa == 0) continue;
            write = CompositePlain<Mode>(cs, cd, as) != 0 || !kKeepsClear;
        } else {
            Color c0;
            ReadPixel<Dst>(task.snapshot + i * targetBytes, c0);
            write =
                StepInGroup<Mode, F == CompositeForm::Knockout>(cs, cd, c0, task.groupAlpha[i], as, L == Loop::Stencil);
        }
        if (write) WritePixel<Dst>(target, cd);
    }
}

}  // namespace vantu::bench
