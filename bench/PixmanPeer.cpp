#include "PixmanPeer.h"

#include <pixman.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace vantu::bench {
namespace {

constexpr std::array kOperators = {PIXMAN_OP_OVER,        PIXMAN_OP_MULTIPLY,   PIXMAN_OP_SCREEN,
                                   PIXMAN_OP_OVERLAY,     PIXMAN_OP_DARKEN,     PIXMAN_OP_LIGHTEN,
                                   PIXMAN_OP_COLOR_DODGE, PIXMAN_OP_COLOR_BURN, PIXMAN_OP_HARD_LIGHT,
                                   PIXMAN_OP_SOFT_LIGHT,  PIXMAN_OP_DIFFERENCE, PIXMAN_OP_EXCLUSION};
static_assert(kOperators.size() == kBlendModeCount);

using Image = std::shared_ptr<pixman_image_t>;

Image Own(pixman_image_t* image) {
    return {image, [](pixman_image_t* p) {
                if (p != nullptr) pixman_image_unref(p);
            }};
}

Image View(IQorImage& image, pixman_format_code_t format) {
    const auto width = static_cast<int>(image.GetWidth());
    const auto stride = static_cast<int>(RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment()));
    return Own(pixman_image_create_bits(format, width, static_cast<int>(image.GetHeight()),
                                        reinterpret_cast<std::uint32_t*>(image.GetPixelData()), stride));
}

bool IsShared(PixelFormat format) {
    return format == PixelFormat::Bgr24 || format == PixelFormat::Bgra32Premultiplied;
}

pixman_format_code_t FormatOf(PixelFormat format) {
    return format == PixelFormat::Bgr24 ? PIXMAN_r8g8b8 : PIXMAN_a8r8g8b8;
}

/// A mask of one value, or none for 255.
Image MakeAlpha(unsigned char value) {
    if (value == 255) return nullptr;
    const auto alpha = static_cast<std::uint16_t>(value * 257);
    const pixman_color_t color{alpha, alpha, alpha, alpha};
    return Own(pixman_image_create_solid_fill(&color));
}

Image MakeMask(const BlendCase& c, const BlendScene& scene) {
    if (c.loop == Loop::SoftMask) return View(*scene.mask, PIXMAN_a8);
    return MakeAlpha(c.Alpha());
}

/// The bits of a stencil from pixman's end of the byte, set where it paints.
Image MakeStencil(const IQorImage& stencil) {
    const auto width = static_cast<int>(stencil.GetWidth()), height = static_cast<int>(stencil.GetHeight());
    const std::size_t stride = RowStride(stencil.GetWidth(), PixelFormat::Index1, stencil.GetAlignment());
    Image image = Own(pixman_image_create_bits(PIXMAN_a1, width, height, nullptr, 0));
    auto* const bits = reinterpret_cast<unsigned char*>(pixman_image_get_data(image.get()));
    const auto imageStride = static_cast<std::size_t>(pixman_image_get_stride(image.get()));
    for (std::size_t y = 0; y < stencil.GetHeight(); ++y) {
        for (std::size_t x = 0; x < stencil.GetWidth(); ++x) {
            const bool paints = (stencil.GetPixelData()[y * stride + x / 8] >> (7 - x % 8) & 1) == 0;
            if (paints) bits[y * imageStride + x / 8] |= static_cast<unsigned char>(1U << x % 8);
        }
    }
    return image;
}

/// A copy of a soft mask: pixman wants rows of whole words.
Image MakeLevels(const IQorImage& mask) {
    const auto width = static_cast<int>(mask.GetWidth()), height = static_cast<int>(mask.GetHeight());
    const std::size_t stride = RowStride(mask.GetWidth(), PixelFormat::Index8, mask.GetAlignment());
    Image image = Own(pixman_image_create_bits(PIXMAN_a8, width, height, nullptr, 0));
    auto* const levels = reinterpret_cast<unsigned char*>(pixman_image_get_data(image.get()));
    const auto imageStride = static_cast<std::size_t>(pixman_image_get_stride(image.get()));
    for (std::size_t y = 0; y < mask.GetHeight(); ++y) {
        std::copy_n(mask.GetPixelData() + y * stride, mask.GetWidth(), levels + y * imageStride);
    }
    return image;
}

/// A colour with its alpha, which is multiplied by a constant one.
Image MakeColor(const unsigned char* pixel, unsigned char alpha) {
    const auto wide = [&](int channel) { return static_cast<std::uint16_t>(pixel[channel] * alpha * 257 / 255); };
    const pixman_color_t color{wide(2), wide(1), wide(0), wide(3)};
    return Own(pixman_image_create_solid_fill(&color));
}

/// Pictures and masks as pixman sees them; one that many calls share is made once.
class Views {
public:
    Image Picture(const PageCall& call) {
        if (call.isColor) return MakeColor(call.picture->GetPixelData(), call.paint.alpha);
        return Shared(call.picture, [&] { return View(*call.picture, PIXMAN_a8r8g8b8); });
    }
    Image Mask(const PageCall& call) {
        const std::shared_ptr<IQorImage>& mask = call.paint.mask;
        if (!mask) return call.isColor ? nullptr : MakeAlpha(call.paint.alpha);
        return Shared(mask, [&] {
            return mask->GetPixelFormat() == PixelFormat::Index1 ? MakeStencil(*mask) : MakeLevels(*mask);
        });
    }

private:
    template <typename Make>
    Image Shared(const std::shared_ptr<IQorImage>& image, Make make) {
        Image& view = views_[image.get()];
        if (!view) view = make();
        return view;
    }

    std::map<const IQorImage*, Image> views_;
};

}  // namespace

bool HasPixmanPeer(const BlendCase& c) {
    return c.form == CompositeForm::Plain && c.loop != Loop::Stencil && IsShared(c.destination) && IsShared(c.source);
}

std::function<void()> MakePixmanPainter(const BlendCase& c, const BlendScene& scene) {
    const Image source = View(*scene.source, FormatOf(c.source));
    const Image target = View(*scene.target, FormatOf(c.destination));
    const Image mask = MakeMask(c, scene);
    const auto size = static_cast<int>(c.size);
    const int copies = static_cast<int>(scene.copies);
    const pixman_op_t op = kOperators[static_cast<std::size_t>(c.mode)];
    return [=] {
        for (int i = 0; i < copies; ++i) {
            pixman_image_composite32(op, source.get(), mask.get(), target.get(), 0, 0, 0, 0, 0, i * size, size, size);
        }
    };
}

bool HasPixman() {
    return true;
}

std::function<void()> MakePixmanReplay(const PageScene& scene) {
    struct Step {
        const PageCall& call;
        Image picture, mask;
    };
    struct Level {
        Image image;
        Point<int, 2> origin;  ///< where its first pixel lies on the page
    };
    std::vector<Step> steps;
    Views views;
    for (const PageCall& call : scene.calls) {
        const bool paints = call.what == PageCall::What::Paint;
        steps.push_back({call, paints ? views.Picture(call) : nullptr, views.Mask(call)});
    }
    return [steps, page = View(*scene.page, PIXMAN_a8r8g8b8)] {
        std::vector<Level> levels{{page, {0, 0}}};
        for (const auto& [call, picture, mask] : steps) {
            if (call.what == PageCall::What::BeginGroup) {
                const auto& r = call.rectangles.front();
                levels.push_back({Own(pixman_image_create_bits(PIXMAN_a8r8g8b8, r.x1 - r.x0, r.y1 - r.y0, nullptr, 0)),
                                  {r.x0, r.y0}});
                continue;
            }
            Image group;
            if (call.what == PageCall::What::EndGroup) {
                group = std::move(levels.back().image);
                levels.pop_back();
            }
            pixman_image_t* const source = group ? group.get() : picture.get();
            const auto& [image, origin] = levels.back();
            const Point<int, 2> at = call.at, maskAt = call.paint.maskAt;
            for (const auto& r : call.rectangles) {
                pixman_image_composite32(kOperators[static_cast<std::size_t>(call.paint.mode)], source, mask.get(),
                                         image.get(), r.x0 - at.x, r.y0 - at.y, r.x0 - maskAt.x, r.y0 - maskAt.y,
                                         r.x0 - origin.x, r.y0 - origin.y, r.x1 - r.x0, r.y1 - r.y0);
            }
        }
    };
}

}  // namespace vantu::bench
