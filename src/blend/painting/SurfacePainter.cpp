#include "blend/painting/SurfacePainter.h"

namespace vantu {
namespace {

template <typename Traits>
struct SurfaceLoops {
    void Rect(const PaintArea& area) const { loops.rect(context, area); }
    void Masked(const PaintArea& area, unsigned int maskX, unsigned int maskY) const {
        loops.PaintMasked(context, area, maskX, maskY);
    }

    const PixelLoops<Traits>& loops;
    PixelLoopContext<Traits> context;
};

}  // namespace

template <typename Traits>
void PaintSurface(BlendMode mode, RasterSurface& surface, const DynamicAccessor& source,
                  const BlendRequest<Traits>& request) {
    std::unique_ptr<DynamicAccessor> snapshot;
    if constexpr (Traits::kGroup) snapshot = MakeAccessor(*request.backdrop);
    SurfaceLoops<Traits> loops{PixelLoopsOf(mode, request),
                               {PixelTarget(surface), source, snapshot.get(), request, false}};
    WalkRanges(request, loops);
}

template void PaintSurface(BlendMode, RasterSurface&, const DynamicAccessor&,
                           const BlendRequest<PDFBlend::BlendingTraits>&);
template void PaintSurface(BlendMode, RasterSurface&, const DynamicAccessor&,
                           const BlendRequest<PDFBlend::GroupBlendingTraits>&);

}  // namespace vantu
