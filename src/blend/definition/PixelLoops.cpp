#include "blend/definition/PixelLoops.h"

#include "blend/definition/CompositeSteps.h"
#include "blend/definition/ModeTable.h"

namespace vantu {
namespace {

using PDFBlend::BlendingTraits;
using PDFBlend::GroupBlendingTraits;

enum class LoopKind { Rect, Stencil, SoftMask };

/// The colours of a loop. They start as opaque black and live through all its pixels: a read that yields nothing leaves
/// the previous pixel's colour.
struct LoopColors {
    Color source{ARGB_BLACK};
    Color target{ARGB_BLACK};
    Color snapshot{ARGB_BLACK};
    Color mask{ARGB_BLACK};
};

/// Composites one pixel outside groups, at (x, y) of the target. @return whether it is to be written.
template <BlendMode Mode>
struct PlainStep {
    using Traits = BlendingTraits;

    static bool Apply(const PixelLoopContext<Traits>& context, LoopKind kind, unsigned int, unsigned int,
                      LoopColors& colors, std::uint32_t as) {
        if (colors.source.GetAlpha() == 0) return false;
        const bool writeClear = kind == LoopKind::Rect && !context.keepClear;
        return CompositePlain<Mode>(colors.source, colors.target, as) != 0 || writeClear;
    }
};

/// The same in a group, with its snapshot and its group alpha.
template <BlendMode Mode, bool Knockout>
struct GroupStep {
    using Traits = GroupBlendingTraits;

    static bool Apply(const PixelLoopContext<Traits>& context, LoopKind kind, unsigned int x, unsigned int y,
                      LoopColors& colors, std::uint32_t as) {
        const BlendRequest<Traits>& request = context.request;
        context.snapshot->GetColor(*context.snapshot, x, y, colors.snapshot);
        std::uint32_t& g = (*request.groupAlpha)[std::size_t{*request.width} * y + x];
        const bool writes = StepInGroup<Mode, Knockout>(colors.source, colors.target, colors.snapshot, g, as,
                                                        kind == LoopKind::Stencil);
        if (g > 255) *request.groupAlphaFits = false;
        return writes;
    }
};

/// The loop that all share. `selects(i, j)` tells whether pixel (i, j) of the area is painted at all, `opacity(i, j,
/// colors)` its effective source alpha.
template <typename Step, LoopKind kind, typename Selects, typename Opacity>
void Paint(const PixelLoopContext<typename Step::Traits>& context, const PaintArea& area, Selects selects,
           Opacity opacity) {
    LoopColors colors;
    const auto paintPixel = [&](unsigned int i, unsigned int j) {
        if (!selects(i, j)) return;
        const unsigned int x = static_cast<unsigned int>(area.targetX) + i;
        const unsigned int y = static_cast<unsigned int>(area.targetY) + j;
        context.source.GetColor(context.source, static_cast<unsigned int>(area.sourceX) + i,
                                static_cast<unsigned int>(area.sourceY) + j, colors.source);
        context.target.Get(x, y, colors.target);
        const std::uint32_t as = opacity(i, j, colors);
        if (Step::Apply(context, kind, x, y, colors, as)) context.target.Set(x, y, colors.target);
    };
    if constexpr (kind == LoopKind::Rect) {
        for (unsigned int j = 0; j < area.height; ++j) {
            for (unsigned int i = 0; i < area.width; ++i) paintPixel(i, j);
        }
    } else {
        for (unsigned int i = 0; i < area.width; ++i) {
            for (unsigned int j = 0; j < area.height; ++j) paintPixel(i, j);
        }
    }
}

template <typename Step>
struct LoopsOf {
    using Traits = typename Step::Traits;
    using Context = PixelLoopContext<Traits>;

    static void Rect(const Context& context, const PaintArea& area) {
        const std::uint32_t k = *context.request.alpha;
        Paint<Step, LoopKind::Rect>(
            context, area, [](unsigned int, unsigned int) { return true; },
            [k](unsigned int, unsigned int, const LoopColors& c) { return ConstantOpacity(k, c.source.GetAlpha()); });
    }

    static void Stencil(const Context& context, const PaintArea& area, const StencilView& mask, unsigned int maskX,
                        unsigned int maskY) {
        const std::uint32_t k = *context.request.alpha;
        Paint<Step, LoopKind::Stencil>(
            context, area, [&](unsigned int i, unsigned int j) { return mask.GetValue(maskX + i, maskY + j) == 0; },
            [k](unsigned int, unsigned int, const LoopColors& c) { return ConstantOpacity(k, c.source.GetAlpha()); });
    }

    static void SoftMask(const Context& context, const PaintArea& area, const DynamicAccessor& mask, unsigned int maskX,
                         unsigned int maskY) {
        const std::uint32_t k = *context.request.alpha;
        const IPDFTransferFunction& transfer = **context.request.maskTransfer;
        Paint<Step, LoopKind::SoftMask>(
            context, area, [](unsigned int, unsigned int) { return true; },
            [&, k](unsigned int i, unsigned int j, LoopColors& c) {
                mask.GetColor(mask, maskX + i, maskY + j, c.mask);
                const double t = transfer.ComputeAlpha(c.mask);
                const std::uint32_t sa = c.source.GetAlpha();
                if constexpr (Traits::kGroup) return GroupMaskOpacity(k, sa, GroupMaskByte(t));
                return PlainMaskOpacity(k, sa, t);
            });
    }
};

/// Through a stencil at full alpha, Normal outside groups is a plain copy: neither the target nor the source's alpha is
/// looked at.
void NormalStencil(const PixelLoopContext<BlendingTraits>& context, const PaintArea& area, const StencilView& mask,
                   unsigned int maskX, unsigned int maskY) {
    if (*context.request.alpha != 255) {
        LoopsOf<PlainStep<BlendMode::Normal>>::Stencil(context, area, mask, maskX, maskY);
        return;
    }
    Color color(ARGB_BLACK);
    for (unsigned int i = 0; i < area.width; ++i) {
        for (unsigned int j = 0; j < area.height; ++j) {
            if (mask.GetValue(maskX + i, maskY + j) != 0) continue;
            context.source.GetColor(context.source, static_cast<unsigned int>(area.sourceX) + i,
                                    static_cast<unsigned int>(area.sourceY) + j, color);
            context.target.Set(static_cast<unsigned int>(area.targetX) + i, static_cast<unsigned int>(area.targetY) + j,
                               color);
        }
    }
}

constexpr auto kPlainLoops = MakeModeTable([]<BlendMode Mode>() {
    using Loops = LoopsOf<PlainStep<Mode>>;
    return PixelLoops<BlendingTraits>{Loops::Rect, Mode == BlendMode::Normal ? NormalStencil : Loops::Stencil,
                                      Loops::SoftMask};
});

template <bool Knockout>
constexpr auto kGroupLoops = MakeModeTable([]<BlendMode Mode>() {
    using Loops = LoopsOf<GroupStep<Mode, Knockout>>;
    return PixelLoops<GroupBlendingTraits>{Loops::Rect, Loops::Stencil, Loops::SoftMask};
});

}  // namespace

template <typename Traits>
void PixelLoops<Traits>::PaintMasked(const Context& context, const PaintArea& area, unsigned int maskX,
                                     unsigned int maskY) const {
    const IQorImage& image = **context.request.mask;
    if (image.GetPixelData() == nullptr) return;
    if (HasStencil(context.request)) {
        stencil(context, area, ViewOf<StencilView>(image, image.GetPalette()), maskX, maskY);
    } else if (*context.request.maskTransfer) {
        if (const auto colors = MakeConstAccessor(image)) softMask(context, area, *colors, maskX, maskY);
    }
}

template struct PixelLoops<BlendingTraits>;
template struct PixelLoops<GroupBlendingTraits>;

template <typename Traits>
const PixelLoops<Traits>& PixelLoopsOf(BlendMode mode, [[maybe_unused]] const BlendRequest<Traits>& request) {
    const auto index = static_cast<std::size_t>(mode);
    if constexpr (Traits::kGroup) {
        return (*request.knockout ? kGroupLoops<true> : kGroupLoops<false>)[index];
    } else {
        return kPlainLoops[index];
    }
}

template const PixelLoops<BlendingTraits>& PixelLoopsOf(BlendMode, const BlendRequest<BlendingTraits>&);
template const PixelLoops<GroupBlendingTraits>& PixelLoopsOf(BlendMode, const BlendRequest<GroupBlendingTraits>&);

}  // namespace vantu
