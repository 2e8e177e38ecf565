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

/// A rectangle of pixels to paint.
struct ScalarTask {
    std::size_t width;
    std::size_t height;
    const unsigned char* source;
    std::size_t sourceStep;    ///< bytes from pixel to pixel; 0 for one colour
    std::size_t sourceStride;  ///< bytes from row to row
    unsigned char* target;
    std::size_t targetStride;
    const unsigned char* snapshot;  ///< groups: rows as those of the target
    std::uint32_t* groupAlpha;      ///< groups: a value for each pixel of the target's rows
    const unsigned char* mask;      ///< a stencil's bits or a soft mask's palette indices
    std::size_t maskLeft;           ///< pixels of a mask's row before the first that counts
    std::size_t maskStride;
    const ColorMap* maskPalette;
    const IPDFTransferFunction* maskTransfer;
    std::uint32_t alpha;
};

using ScalarLoop = void (*)(const ScalarTask& task);

/// The plain loop that a careful programmer writes first, one pixel at a time over the steps that define the result.
template <BlendMode Mode, PixelFormat Dst, PixelFormat Src, Loop L, CompositeForm F>
void PaintScalar(const ScalarTask& task) {
    constexpr std::size_t targetBytes = BitsPerPixel(Dst) / 8;
    constexpr bool kCopies = Mode == BlendMode::Normal && L == Loop::Stencil && F == CompositeForm::Plain;
    constexpr bool kKeepsClear =
        L != Loop::Rect ||
        (Mode == BlendMode::Multiply && Dst == PixelFormat::Bgra32Premultiplied && Src == PixelFormat::Bgra32Inverted);
    for (std::size_t y = 0; y < task.height; ++y) {
        const unsigned char* const source = task.source + y * task.sourceStride;
        const std::size_t row = y * task.targetStride;
        const unsigned char* const mask = task.mask + y * task.maskStride;
        for (std::size_t x = 0; x < task.width; ++x) {
            const std::size_t place = row + x * targetBytes;
            const std::size_t sample = task.maskLeft + x;
            if constexpr (L == Loop::Stencil) {
                if ((mask[sample >> 3] >> (7 - (sample & 7)) & 1) != 0) continue;
            }
            Color cs;
            ReadPixel<Src>(source + x * task.sourceStep, cs);
            if (kCopies && task.alpha == 255) {
                WritePixel<Dst>(task.target + place, cs);
                continue;
            }
            Color cd;
            ReadPixel<Dst>(task.target + place, cd);
            const std::uint32_t sa = cs.GetAlpha();
            std::uint32_t as = 0;
            if constexpr (L == Loop::SoftMask) {
                const double t = task.maskTransfer->ComputeAlpha((*task.maskPalette)[mask[sample]]);
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
                ReadPixel<Dst>(task.snapshot + place, c0);
                write = StepInGroup<Mode, F == CompositeForm::Knockout>(
                    cs, cd, c0, task.groupAlpha[place / targetBytes], as, L == Loop::Stencil);
            }
            if (write) WritePixel<Dst>(task.target + place, cd);
        }
    }
}

}  // namespace vantu::bench
