#pragma once

#include <vantu/IQorImage.h>

#include "blend/definition/BlendRequest.h"
#include "blend/painting/SpanPlan.h"

namespace vantu {

/// Paints a request on an image: the ranges are walked, and each rectangle runs through the stages of the kernel's
/// formats and mode. @return false, with nothing painted, if there is something to paint on an image without memory.
template <typename Traits>
bool PaintImage(const PaintKernel& kernel, IQorImage& destination, const IQorImage& source,
                const BlendRequest<Traits>& request);

}  // namespace vantu
