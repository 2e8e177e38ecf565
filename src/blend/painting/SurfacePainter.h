#pragma once

#include "blend/definition/PixelLoops.h"

namespace vantu {

/// Paints a request on a surface, pixel by pixel.
template <typename Traits>
void PaintSurface(BlendMode mode, RasterSurface& surface, const DynamicAccessor& source,
                  const BlendRequest<Traits>& request);

}  // namespace vantu
