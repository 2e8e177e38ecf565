#include <array>
#include <cstddef>
#include <utility>

#include "blend/CPDFImageBlender.h"
#include "blend/definition/ModeTable.h"
#include "blend/painting/ImagePainter.h"
#include "blend/painting/SurfacePainter.h"
#include "pixel/Formats.h"

namespace vantu {

/// Paints a source of format `Src` on an image of format `Dst`: an instance is nothing but its type.
template <PixelFormat Dst, PixelFormat Src, BlendMode Mode, typename Traits>
struct CPDFImageBlender::PixelBlend final : PixelBlendBase<Traits> {
    bool Blend(IQorImage* destination, IQorImage* source, BlendRequest<Traits>* request) const override {
        // One instance leaves the bytes of a pixel whose result alpha is 0; all others store zeros there.
        constexpr bool keepClear = Dst == PixelFormat::Bgra32Premultiplied && Src == PixelFormat::Bgra32Inverted &&
                                   Mode == BlendMode::Multiply && !Traits::kGroup;
        static constexpr PaintKernel kernel{Dst, Src, Mode, keepClear};
        return PaintImage(kernel, *destination, *source, *request);
    }
};

/// Paints a source of any format on a host's surface.
template <BlendMode Mode, typename Traits>
struct CPDFImageBlender::RasterizerBlend final : RasterizerBlendBase<Traits> {
    bool Blend(RasterSurface* surface, DynamicAccessor* source, BlendRequest<Traits>* request) const override {
        PaintSurface(Mode, *surface, *source, *request);
        return true;
    }
};

namespace {

// The kernels have no state: all blenders use the same objects.

template <BlendMode Mode, typename Traits>
constexpr CPDFImageBlender::RasterizerBlend<Mode, Traits> kRasterizerBlend;
template <PixelFormat Dst, PixelFormat Src, BlendMode Mode, typename Traits>
constexpr CPDFImageBlender::PixelBlend<Dst, Src, Mode, Traits> kPixelBlend;

/// The kernels on surfaces, by mode.
template <typename Traits>
constexpr auto kRasterizerBlends =
    MakeModeTable([]<BlendMode Mode>() -> const CPDFImageBlender::RasterizerBlendBase<Traits>* {
        return &kRasterizerBlend<Mode, Traits>;
    });

/// The kernels of a pair of formats, by mode; null for a source that is not painted onto images.
template <PixelFormat Dst, PixelFormat Src, typename Traits>
constexpr auto kPixelBlendsOfPair =
    MakeModeTable([]<BlendMode Mode>() -> const CPDFImageBlender::PixelBlendBase<Traits>* {
        if constexpr (FactsOf(Src).source) return &kPixelBlend<Dst, Src, Mode, Traits>;
        return nullptr;
    });

/// The kernels on images, by destination format, source format and mode.
template <typename Traits>
constexpr auto kPixelBlends = []<std::size_t... I>(std::index_sequence<I...>) {
    constexpr std::size_t n = kPixelFormats.size();
    return std::array{kPixelBlendsOfPair<kPixelFormats[I / n], kPixelFormats[I % n], Traits>...};
}
(std::make_index_sequence<kPixelFormats.size() * kPixelFormats.size()>());

}  // namespace

template <typename Traits>
const CPDFImageBlender::PixelBlendBase<Traits>* CPDFImageBlender::FindPixelBlend(BlendKey key) {
    constexpr std::size_t n = kPixelFormats.size();
    const std::size_t destination = (key >> 16) - 1, source = (key >> 8 & 0xFF) - 1, mode = key & 0xFF;
    const bool known = destination < n && source < n && mode < kBlendModeCount;
    return known ? kPixelBlends<Traits>[destination * n + source][mode] : nullptr;
}

template <typename Traits>
const CPDFImageBlender::RasterizerBlendBase<Traits>* CPDFImageBlender::FindRasterizerBlend(BlendMode mode) {
    const auto index = static_cast<std::size_t>(mode);
    return index < kBlendModeCount ? kRasterizerBlends<Traits>[index] : nullptr;
}

template const CPDFImageBlender::PixelBlendBase<PDFBlend::BlendingTraits>* CPDFImageBlender::FindPixelBlend(BlendKey);
template const CPDFImageBlender::PixelBlendBase<PDFBlend::GroupBlendingTraits>* CPDFImageBlender::FindPixelBlend(
    BlendKey);
template const CPDFImageBlender::RasterizerBlendBase<PDFBlend::BlendingTraits>* CPDFImageBlender::FindRasterizerBlend(
    BlendMode);
template const CPDFImageBlender::RasterizerBlendBase<PDFBlend::GroupBlendingTraits>*
    CPDFImageBlender::FindRasterizerBlend(BlendMode);

}  // namespace vantu
