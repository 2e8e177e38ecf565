#pragma once

#include <vantu/Color.h>
#include <vantu/Export.h>

#include <memory>

namespace vantu {

/// The host's pixel sink: two function entries that a blender without a destination image calls per pixel.
///
/// Hosts derive from it, set both entries, and find their own state behind the first argument. Positions are
/// those of the ranges that are painted; what happens outside the surface is the host's affair. Both are called on the
/// thread of the `Blend`, and nothing is kept between calls.
struct RasterSurface {
    /// Stores the straight colour at (x, y) in `out`.
    void (*GetPixel)(RasterSurface* surface, int x, int y, Color& out) = nullptr;
    /// Replaces the colour at (x, y).
    void (*SetPixel)(RasterSurface* surface, int x, int y, const Color& in) = nullptr;
};

/// The host's rasterizer. A blender asks it for its surface once, when it is created without an image.
class VANTU_API IRasterizer {
public:
    virtual ~IRasterizer() = default;

    /// The surface to paint on, or empty if there is none. The blender holds it as long as it lives.
    virtual std::shared_ptr<RasterSurface> GetRasterSurface() = 0;

protected:
    /// For implementations alone.
    /// @{
    IRasterizer() = default;
    IRasterizer(const IRasterizer&) = default;
    IRasterizer& operator=(const IRasterizer&) = default;
    /// @}
};

}  // namespace vantu
