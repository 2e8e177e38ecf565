#include <algorithm>
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

using PDFBlend::BlendingTraits;
using PDFBlend::GroupBlendingTraits;

/// Paints a source of format `Src` on an image of format `Dst`: an instance is nothing but its type.
template <PixelFormat Dst, PixelFormat Src, BlendMode Mode, typename Traits>
struct CPDFImageBlender::PixelBlend final : PixelBlendBase<Traits> {
    bool Blend(IQorImage* destination, IQorImage* source, BlendRequest<Traits>* request) override {
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
    bool Blend(RasterSurface* surface, DynamicAccessor* source, BlendRequest<Traits>* request) override {
        PaintSurface(Mode, *surface, *source, *request);
        return true;
    }
};

namespace {

/// The formats of images that can be painted onto images.
constexpr auto kSourceFormats = [] {
    constexpr auto isSource = [](const FormatFacts& facts) { return facts.source; };
    std::array<PixelFormat, std::count_if(kFormatFacts.begin(), kFormatFacts.end(), isSource)> formats{};
    std::size_t count = 0;
    for (const FormatFacts& facts : kFormatFacts) {
        if (isSource(facts)) formats[count++] = facts.format;
    }
    return formats;
}();

template <typename Traits>
struct PixelBlendEntry {
    BlendKey key;
    std::unique_ptr<CPDFImageBlender::PixelBlendBase<Traits>> (*make)();
};

/// The makers of all kernels of a traits, by ascending key.
template <typename Traits>
constexpr auto PixelBlendEntries() {
    constexpr auto pair = []<std::size_t I>() {
        return MakeModeTable([]<BlendMode Mode>() {
            constexpr PixelFormat dst = kPixelFormats[I / kSourceFormats.size()];
            constexpr PixelFormat src = kSourceFormats[I % kSourceFormats.size()];
            return PixelBlendEntry<Traits>{
                MakeBlendKey(dst, src, Mode), []() -> std::unique_ptr<CPDFImageBlender::PixelBlendBase<Traits>> {
                    return std::make_unique<CPDFImageBlender::PixelBlend<dst, src, Mode, Traits>>();
                }};
        });
    };
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return std::array{pair.template operator()<I>()...};
    }
    (std::make_index_sequence<kPixelFormats.size() * kSourceFormats.size()>());
}

}  // namespace

template <typename Traits>
CPDFImageBlender::PixelBlends<Traits> CPDFImageBlender::MakePixelBlends() {
    static constexpr auto entries = PixelBlendEntries<Traits>();
    PixelBlends<Traits> blends;
    for (const auto& pair : entries) {
        for (const auto& entry : pair) blends.emplace_hint(blends.end(), entry.key, entry.make());
    }
    return blends;
}

template <typename Traits>
CPDFImageBlender::RasterizerBlends<Traits> CPDFImageBlender::MakeRasterizerBlends() {
    constexpr auto makers = MakeModeTable([]<BlendMode Mode>() {
        return +[]() -> std::unique_ptr<RasterizerBlendBase<Traits>> {
            return std::make_unique<RasterizerBlend<Mode, Traits>>();
        };
    });
    RasterizerBlends<Traits> blends;
    blends.reserve(makers.size());
    for (const auto make : makers) blends.push_back(make());
    return blends;
}

template CPDFImageBlender::PixelBlends<BlendingTraits> CPDFImageBlender::MakePixelBlends();
template CPDFImageBlender::PixelBlends<GroupBlendingTraits> CPDFImageBlender::MakePixelBlends();
template CPDFImageBlender::RasterizerBlends<BlendingTraits> CPDFImageBlender::MakeRasterizerBlends();
template CPDFImageBlender::RasterizerBlends<GroupBlendingTraits> CPDFImageBlender::MakeRasterizerBlends();

}  // namespace vantu
