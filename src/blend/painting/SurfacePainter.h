#pragma once

#include "blend/definition/PixelLoops.h"

namespace vantu {

/// Paints a request on a surface, pixel by pixel.
template <typename Traits>
void PaintSurface(BlendMode mode, RasterSurface& surface, const DynamicAccessor& source,
                  const BlendRequest<Traits>& request);

/// Paints one masked rectangle with the pixel loops. A soft mask without an accessor, without memory or without a
/// transfer function leaves it unpainted.
template <typename Traits>
void PaintMaskedPixels(const PixelLoops<Traits>& loops, const PixelLoopContext<Traits>& context, const PaintArea& area,
                       unsigned int maskX, unsigned int maskY) {
    const IQorImage& mask = **context.request.mask;
    if (mask.GetPixelData() == nullptr) return;
    if (HasStencil(context.request)) {
        loops.stencil(context, area, ViewOf<StencilView>(mask, mask.GetPalette()), maskX, maskY);
        return;
    }
    if (!*context.request.maskTransfer) return;
    if (const auto colors = MakeConstAccessor(mask)) loops.softMask(context, area, *colors, maskX, maskY);
}

}  // namespace vantu
