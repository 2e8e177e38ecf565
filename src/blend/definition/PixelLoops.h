#pragma once

#include <vantu/IRasterizer.h>

#include "blend/definition/BlendRequest.h"
#include "blend/definition/RangeWalk.h"
#include "pixel/DynamicAccessor.h"

// The pixel loops, one pixel at a time in the defined order: rows without a mask, columns with one. They paint
// surfaces, and images wherever the order of the pixels can be seen or an opacity leaves 8 bits.

namespace vantu {

/// Where a loop reads and writes destination colours: a host's surface, or an image.
class PixelTarget {
public:
    explicit PixelTarget(RasterSurface& surface) : surface_(&surface) {}
    explicit PixelTarget(const DynamicAccessor& image) : image_(&image) {}

    void Get(unsigned int x, unsigned int y, Color& out) const {
        if (surface_ != nullptr) {
            surface_->GetPixel(surface_, static_cast<int>(x), static_cast<int>(y), out);
        } else {
            image_->GetColor(*image_, x, y, out);
        }
    }
    void Set(unsigned int x, unsigned int y, const Color& in) const {
        if (surface_ != nullptr) {
            surface_->SetPixel(surface_, static_cast<int>(x), static_cast<int>(y), in);
        } else {
            image_->SetColor(*image_, x, y, in);
        }
    }

private:
    RasterSurface* surface_ = nullptr;
    const DynamicAccessor* image_ = nullptr;
};

using StencilView = ConstIndexedAccessor<PixelFormat::Index1>;

template <typename Traits>
struct PixelLoopContext {
    PixelTarget target;
    const DynamicAccessor& source;
    const DynamicAccessor* snapshot;  ///< in groups
    const BlendRequest<Traits>& request;
    bool keepClear;  ///< outside groups, `rect` leaves a pixel whose result alpha is 0 as it is
};

/// The three loops of a mode.
template <typename Traits>
struct PixelLoops {
    using Context = PixelLoopContext<Traits>;

    /// Paints one masked rectangle with the loop for its mask. A soft mask without an accessor, without memory or
    /// without a transfer function leaves it unpainted.
    void PaintMasked(const Context& context, const PaintArea& area, unsigned int maskX, unsigned int maskY) const;

    void (*rect)(const Context& context, const PaintArea& area);
    void (*stencil)(const Context& context, const PaintArea& area, const StencilView& mask, unsigned int maskX,
                    unsigned int maskY);
    void (*softMask)(const Context& context, const PaintArea& area, const DynamicAccessor& mask, unsigned int maskX,
                     unsigned int maskY);
};

/// The loops of a mode for a request, in a knockout group its knockout form; `mode` is below `kBlendModeCount`.
template <typename Traits>
const PixelLoops<Traits>& PixelLoopsOf(BlendMode mode, const BlendRequest<Traits>& request);

}  // namespace vantu
