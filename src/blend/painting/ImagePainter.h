#pragma once

#include <vantu/BlendMode.h>
#include <vantu/IQorImage.h>

#include "blend/BlendRequest.h"

namespace vantu {

/// The combination that a kernel object stands for.
struct PaintKernel {
    PixelFormat destination;
    PixelFormat source;
    BlendMode mode;
    bool keepClear;  ///< without a mask, leave a pixel whose result alpha is 0 as it is
};

/// Paints a request on an image: the ranges are walked, and each rectangle runs through the stages of the kernel's
/// formats and mode. @return false, with nothing painted, if there is something to paint on an image without memory.
template <typename Traits>
bool PaintImage(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                const BlendRequest<Traits>& request);

}  // namespace vantu
