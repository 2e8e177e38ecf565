#pragma once

#include <vantu/IPDFImageBlender.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "blend/GroupState.h"
#include "blend/definition/BlendRequest.h"
#include "pixel/DynamicAccessor.h"

namespace vantu {

/// Selects the kernel of an image: destination format in bits 16 and up, source format in bits 8 to 15, mode below.
using BlendKey = std::uint32_t;

/// A mode above 255 runs into the formats, and then finds nothing or another kernel.
constexpr BlendKey MakeBlendKey(PixelFormat destination, PixelFormat source, BlendMode mode) {
    return (static_cast<BlendKey>(destination) << 8 | static_cast<BlendKey>(source)) << 8 | static_cast<BlendKey>(mode);
}

/// The blender: its kernels, its destination and its stack of open groups.
class CPDFImageBlender : public IPDFImageBlender {
public:
    class CCoverage;

    /// A kernel that paints on an image. Stateless.
    template <typename Traits>
    struct PixelBlendBase {
        virtual ~PixelBlendBase() = default;
        virtual bool Blend(IQorImage* destination, IQorImage* source, BlendRequest<Traits>* request) const = 0;
    };

    /// A kernel that paints on a surface. Stateless.
    template <typename Traits>
    struct RasterizerBlendBase {
        virtual ~RasterizerBlendBase() = default;
        virtual bool Blend(RasterSurface* surface, DynamicAccessor* source, BlendRequest<Traits>* request) const = 0;
    };

    template <PixelFormat Dst, PixelFormat Src, BlendMode Mode, typename Traits>
    struct PixelBlend;
    template <BlendMode Mode, typename Traits>
    struct RasterizerBlend;

    CPDFImageBlender(std::shared_ptr<IRasterizer> rasterizer, std::shared_ptr<IQorImage> image);
    ~CPDFImageBlender() override;
    CPDFImageBlender(const CPDFImageBlender&) = delete;
    CPDFImageBlender& operator=(const CPDFImageBlender&) = delete;

    bool Blend(const std::shared_ptr<IQorImage>& source, const std::shared_ptr<Coverage>& coverage,
               const Point<int, 2>& offset, const std::shared_ptr<IQorImage>& mask,
               const std::shared_ptr<IPDFTransferFunction>& maskTransfer, const Point<int, 2>& maskOffset,
               unsigned char alpha, BlendMode mode, std::shared_ptr<Coverage>& blended) override;
    bool BeginGroup(const std::shared_ptr<IQorImage>& image, const std::shared_ptr<void>& heldObject, bool knockout,
                    bool keepBackdrop, bool plainResolve) override;
    bool EndGroup() override;

    /// The kernels on images, by destination format, source format and mode; null for a source that is not painted.
    template <typename Traits>
    using PixelBlends = std::vector<std::unique_ptr<const PixelBlendBase<Traits>>>;
    /// The kernels on surfaces, by mode.
    template <typename Traits>
    using RasterizerBlends = std::vector<std::unique_ptr<const RasterizerBlendBase<Traits>>>;

private:
    template <typename Traits>
    static PixelBlends<Traits> MakePixelBlends();
    template <typename Traits>
    static RasterizerBlends<Traits> MakeRasterizerBlends();

    bool BlendOnDestination(IQorImage& source, BlendRequest<PDFBlend::BlendingTraits>& request, BlendMode mode);

    // Destruction runs backwards: kernels, surface, rasterizer, image, then the groups that are still open.
    std::vector<GroupState> groupStack_;  ///< the last is the top
    /// Snapshot and alphas of the last group that was closed, whose memory the next one takes: fresh memory costs
    /// several times what painting on it does.
    GroupState spare_;
    std::shared_ptr<IQorImage> image_;
    std::shared_ptr<IRasterizer> rasterizer_;
    std::shared_ptr<RasterSurface> surface_;                                 ///< only without an image
    RasterizerBlends<PDFBlend::GroupBlendingTraits> groupRasterizerBlends_;  ///< never selected
    RasterizerBlends<PDFBlend::BlendingTraits> rasterizerBlends_;
    PixelBlends<PDFBlend::GroupBlendingTraits> groupPixelBlends_;
    PixelBlends<PDFBlend::BlendingTraits> pixelBlends_;
};

}  // namespace vantu
