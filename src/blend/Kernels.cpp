#include <array>
#include <cstddef>
#include <memory>
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

constexpr std::size_t kFormats = kPixelFormats.size();

/// The kernel number `I` of a table by destination format, source format and mode.
template <std::size_t I, typename Traits>
std::unique_ptr<const CPDFImageBlender::PixelBlendBase<Traits>> MakePixelBlend() {
    constexpr PixelFormat destination = kPixelFormats[I / kBlendModeCount / kFormats];
    constexpr PixelFormat source = kPixelFormats[I / kBlendModeCount % kFormats];
    constexpr auto mode = static_cast<BlendMode>(I % kBlendModeCount);
    if constexpr (FactsOf(source).source) {
        return std::make_unique<const CPDFImageBlender::PixelBlend<destination, source, mode, Traits>>();
    }
    return nullptr;
}

template <BlendMode Mode, typename Traits>
std::unique_ptr<const CPDFImageBlender::RasterizerBlendBase<Traits>> MakeRasterizerBlend() {
    return std::make_unique<const CPDFImageBlender::RasterizerBlend<Mode, Traits>>();
}

/// What the functions of an array make, in its order.
template <typename Kernels, typename Makers>
Kernels MakeAll(const Makers& makers) {
    Kernels kernels;
    kernels.reserve(makers.size());
    for (const auto make : makers) kernels.push_back(make());
    return kernels;
}

}  // namespace

template <typename Traits>
CPDFImageBlender::PixelBlends<Traits> CPDFImageBlender::MakePixelBlends() {
    static constexpr auto makers = []<std::size_t... I>(std::index_sequence<I...>) {
        return std::array<decltype(&MakePixelBlend<0, Traits>), sizeof...(I)>{&MakePixelBlend<I, Traits>...};
    }
    (std::make_index_sequence<kFormats * kFormats * kBlendModeCount>());
    return MakeAll<PixelBlends<Traits>>(makers);
}

template <typename Traits>
CPDFImageBlender::RasterizerBlends<Traits> CPDFImageBlender::MakeRasterizerBlends() {
    static constexpr auto makers = MakeModeTable([]<BlendMode Mode>() { return &MakeRasterizerBlend<Mode, Traits>; });
    return MakeAll<RasterizerBlends<Traits>>(makers);
}

template CPDFImageBlender::PixelBlends<PDFBlend::BlendingTraits> CPDFImageBlender::MakePixelBlends();
template CPDFImageBlender::PixelBlends<PDFBlend::GroupBlendingTraits> CPDFImageBlender::MakePixelBlends();
template CPDFImageBlender::RasterizerBlends<PDFBlend::BlendingTraits> CPDFImageBlender::MakeRasterizerBlends();
template CPDFImageBlender::RasterizerBlends<PDFBlend::GroupBlendingTraits> CPDFImageBlender::MakeRasterizerBlends();

}  // namespace vantu
