#include "blend/painting/SurfacePainter.h"

namespace vantu {
namespace {

template <typename Traits>
struct SurfaceLoops {
    void Rect(const PaintArea& area) const { loops.rect(context, area); }
    void Masked(const PaintArea& area, unsigned int maskX, unsigned int maskY) const {
        PaintMaskedPixels(loops, context, area, maskX, maskY);
    }

    const PixelLoops<Traits>& loops;
    PixelLoopContext<Traits> context;
};

template <typename Traits>
void Paint(BlendMode mode, RasterSurface& surface, const DynamicAccessor& source, const BlendRequest<Traits>& request) {
    SurfaceLoops<Traits> loops{PixelLoopsOf<Traits>(mode), {PixelTarget(surface), source, request, false}};
    WalkRanges(request, loops);
}

}  // namespace

template <>
void PaintSurface(BlendMode mode, RasterSurface& surface, const DynamicAccessor& source,
                  const BlendRequest<PDFBlend::BlendingTraits>& request) {
    Paint(mode, surface, source, request);
}

template <>
void PaintSurface(BlendMode mode, RasterSurface& surface, const DynamicAccessor& source,
                  const BlendRequest<PDFBlend::GroupBlendingTraits>& request) {
    Paint(mode, surface, source, request);
}

}  // namespace vantu
