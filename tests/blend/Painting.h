#pragma once

#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>
#include <vantu/IPDFImageBlender.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "blend/definition/CompositeSteps.h"
#include "blend/definition/ModeTable.h"
#include "pixel/DynamicAccessor.h"
#include "support/Picture.h"

namespace vantu::test {

using Coverage = IPDFImageBlender::Coverage;
using TransferType = IPDFTransferFunction::Type;
using TransferSource = IPDFTransferFunction::SourceType;

inline std::shared_ptr<Coverage> Cover(const std::vector<Range<int, 2>>& ranges) {
    auto coverage = IPDFImageBlender::CreateCoverage();
    for (const auto& range : ranges) coverage->AddRange(range);
    return coverage;
}

/// An image of one row that holds these bytes.
inline std::shared_ptr<TestImage> Row(PixelFormat format, const std::vector<unsigned char>& bytes) {
    const auto width = static_cast<unsigned int>(bytes.size() * 8 / BitsPerPixel(format));
    auto image = std::make_shared<TestImage>(Shape{width, 1, format, 1});
    std::ranges::copy(bytes, image->GetPixelData());
    return image;
}

/// The arguments of one `Blend`.
struct Call {
    std::shared_ptr<IQorImage> source = nullptr;
    std::shared_ptr<Coverage> coverage = nullptr;
    Point<int, 2> offset{0, 0};
    std::shared_ptr<IQorImage> mask = nullptr;
    std::shared_ptr<IPDFTransferFunction> transfer = nullptr;
    Point<int, 2> maskOffset{0, 0};
    unsigned char alpha = 255;
    BlendMode mode = BlendMode::Normal;
};

inline bool Paint(IPDFImageBlender& blender, const Call& call, std::shared_ptr<Coverage>& blended) {
    return blender.Blend(call.source, call.coverage, call.offset, call.mask, call.transfer, call.maskOffset, call.alpha,
                         call.mode, blended);
}

inline bool Paint(IPDFImageBlender& blender, const Call& call) {
    std::shared_ptr<Coverage> blended;
    return Paint(blender, call, blended);
}

/// A surface that keeps its colours and, in `log`, the order in which it was asked: 'G' or 'S', x, y.
struct TestSurface : RasterSurface {
    struct Access {
        char what;
        int x;
        int y;
        bool operator==(const Access&) const = default;
    };

    TestSurface(unsigned int width, unsigned int height, unsigned int argb = 0)
        : width(width), pixels(std::size_t{width} * height, Color(argb)) {
        GetPixel = [](RasterSurface* self, int x, int y, Color& out) {
            auto& surface = static_cast<TestSurface&>(*self);
            surface.log.push_back({'G', x, y});
            if (surface.readable) out = surface.At(x, y);
        };
        SetPixel = [](RasterSurface* self, int x, int y, const Color& in) {
            auto& surface = static_cast<TestSurface&>(*self);
            surface.log.push_back({'S', x, y});
            surface.At(x, y) = in;
        };
    }
    Color& At(int x, int y) { return pixels.at(width * static_cast<unsigned int>(y) + static_cast<unsigned int>(x)); }

    unsigned int width;
    std::vector<Color> pixels;
    std::vector<Access> log;
    bool readable = true;  ///< otherwise `GetPixel` leaves its argument as it is
};

struct TestRasterizer : IRasterizer {
    explicit TestRasterizer(std::shared_ptr<RasterSurface> surface) : surface(std::move(surface)) {}
    std::shared_ptr<RasterSurface> GetRasterSurface() override { return surface; }
    std::shared_ptr<RasterSurface> surface;
};

inline std::shared_ptr<IPDFImageBlender> BlenderOn(const std::shared_ptr<IQorImage>& image,
                                                   std::shared_ptr<RasterSurface> surface = nullptr) {
    std::shared_ptr<IRasterizer> rasterizer = std::make_shared<TestRasterizer>(std::move(surface));
    return IPDFImageBlender::Create(rasterizer, image);
}

/// A transfer function of the host's own.
class HostFunction : public IPDFTransferFunction {
public:
    explicit HostFunction(std::function<double(const Color&)> opacity)
        : IPDFTransferFunction(SourceType::Luminosity), opacity_(std::move(opacity)) {}
    Type GetType() const override { return Type::Identity; }
    double ComputeAlpha(const Color& color) const override { return opacity_(color); }
    unsigned int Save(CQorStorage*) const override { return 0; }
    bool Restore(CQorStorage&) override { return false; }

private:
    std::function<double(const Color&)> opacity_;
};

/// A group as the model keeps it.
struct ModelGroup {
    const DynamicAccessor& snapshot;
    bool knockout;
    unsigned int width;
    std::vector<std::uint32_t> alpha;
};

inline constexpr auto kPlainSteps = MakeModeTable([]<BlendMode Mode>() { return &CompositePlain<Mode>; });
inline constexpr auto kGroupSteps = MakeModeTable([]<BlendMode Mode>() {
    return std::array{&StepInGroup<Mode, false>, &StepInGroup<Mode, true>};
});

/// Paints a call on `target`, which has `Get(x, y, Color&)` and `Set(x, y, const Color&)`, the plain way: pixel by
/// pixel with the scalar steps, where each pixel is found out by itself whether and where it meets the mask.
/// @param keepClear leave a pixel whose result alpha is 0 also without a mask.
template <typename Target>
void PaintModel(const Call& call, const DynamicAccessor& source, Target target, bool keepClear, ModelGroup* group) {
    const auto u = [](int value) { return static_cast<unsigned int>(value); };
    const auto mode = static_cast<std::size_t>(call.mode);
    std::unique_ptr<DynamicAccessor> maskColors;
    const int mx = call.maskOffset.x, my = call.maskOffset.y;
    int maskWidth = 0, maskHeight = 0;
    bool stencil = false, readable = false;
    if (call.mask) {
        maskWidth = static_cast<int>(call.mask->GetWidth());
        maskHeight = static_cast<int>(call.mask->GetHeight());
        stencil = call.mask->GetPixelFormat() == PixelFormat::Index1 &&
                  (!call.transfer || (call.transfer->GetType() == TransferType::Identity &&
                                      call.transfer->GetSourceType() == TransferSource::Alpha));
        readable = std::as_const(*call.mask).GetPixelData() != nullptr && (stencil || call.transfer);
        if (readable) maskColors = MakeConstAccessor(*call.mask);
    }
    for (const Range<int, 2>& range : call.coverage->GetRanges()) {
        const int x0 = range.x0, y0 = range.y0, x1 = range.x1, y1 = range.y1;
        const bool meet =
            std::max(x0, mx) < std::min(x1, mx + maskWidth) && std::max(y0, my) < std::min(y1, my + maskHeight);
        const auto paint = [&](int x, int y, bool masked) {
            const int px = x + call.offset.x, py = y + call.offset.y;
            const unsigned int tx = u(meet ? px : x), ty = u(meet ? py : y);
            const unsigned int sx = u(meet ? x : px), sy = u(meet ? y : py);
            if (masked && (!readable || (stencil && ValueAt(*call.mask, u(x - mx), u(y - my)) != 0))) return;
            Color cs(ARGB_BLACK), cd(ARGB_BLACK), c0(ARGB_BLACK), cm(ARGB_BLACK);
            source.GetColor(source, sx, sy, cs);
            if (masked && stencil && !group && mode == 0 && call.alpha == 255) return target.Set(tx, ty, cs);
            target.Get(tx, ty, cd);
            const std::uint32_t k = call.alpha, sa = cs.GetAlpha();
            std::uint32_t as = ConstantOpacity(k, sa);
            if (masked && !stencil) {
                maskColors->GetColor(*maskColors, u(x - mx), u(y - my), cm);
                const double t = call.transfer->ComputeAlpha(cm);
                as = group ? GroupMaskOpacity(k, sa, GroupMaskByte(t)) : PlainMaskOpacity(k, sa, t);
            }
            bool write = false;
            if (group) {
                group->snapshot.GetColor(group->snapshot, tx, ty, c0);
                std::uint32_t& g = group->alpha.at(group->width * ty + tx);
                write = kGroupSteps[mode][group->knockout](cs, cd, c0, g, as, masked && stencil);
            } else if (sa != 0) {
                write = kPlainSteps[mode](cs, cd, as) != 0 || (!masked && !keepClear);
            }
            if (write) target.Set(tx, ty, cd);
        };
        // A range that meets the mask is painted in pieces: above, below, left and right of the mask, then through it.
        const auto piece = [&](int x, int y) {
            if (!meet || y < my) return 0;
            if (y >= my + maskHeight) return 1;
            return x < mx ? 2 : x >= mx + maskWidth ? 3 : 4;
        };
        for (int part = 0; part < 4; ++part) {
            for (int y = y0; y < y1; ++y) {
                for (int x = x0; x < x1; ++x) {
                    if (piece(x, y) == part) paint(x, y, false);
                }
            }
        }
        for (int x = x0; x < x1; ++x) {
            for (int y = y0; y < y1; ++y) {
                if (piece(x, y) == 4) paint(x, y, true);
            }
        }
    }
}

/// The model on an image: palettes of source and destination do not count.
inline void PaintModel(const Call& call, IQorImage& image, ModelGroup* group = nullptr) {
    struct Target {
        void Get(unsigned int x, unsigned int y, Color& out) const { view.GetColor(view, x, y, out); }
        void Set(unsigned int x, unsigned int y, const Color& in) const { view.SetColor(view, x, y, in); }
        const DynamicAccessor& view;
    };
    const auto view = MakeDirectAccessor(image, image.GetPixelFormat());
    const auto source = MakeConstDirectAccessor(*call.source, call.source->GetPixelFormat());
    const bool keepClear = image.GetPixelFormat() == PixelFormat::Bgra32Premultiplied &&
                           call.source->GetPixelFormat() == PixelFormat::Bgra32Inverted &&
                           call.mode == BlendMode::Multiply;
    PaintModel(call, *source, Target{*view}, keepClear, group);
}

/// The model on a surface: the source is seen through its palette.
inline void PaintModel(const Call& call, TestSurface& surface) {
    struct Target {
        void Get(unsigned int x, unsigned int y, Color& out) const { out = At(x, y); }
        void Set(unsigned int x, unsigned int y, const Color& in) const { At(x, y) = in; }
        Color& At(unsigned int x, unsigned int y) const { return surface.At(static_cast<int>(x), static_cast<int>(y)); }
        TestSurface& surface;
    };
    PaintModel(call, *MakeConstAccessor(*call.source), Target{surface}, false, nullptr);
}

}  // namespace vantu::test
