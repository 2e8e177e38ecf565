#include "PixmanPeer.h"

#include <pixman.h>

#include <array>
#include <memory>

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

Image View(CQorImage& image, pixman_format_code_t format) {
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

Image MakeMask(const BlendCase& c, const BlendScene& scene) {
    if (c.loop == Loop::SoftMask) return View(*scene.mask, PIXMAN_a8);
    if (c.Alpha() == 255) return nullptr;
    const auto alpha = static_cast<std::uint16_t>(c.Alpha() * 257);
    const pixman_color_t color{alpha, alpha, alpha, alpha};
    return Own(pixman_image_create_solid_fill(&color));
}

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

}  // namespace vantu::bench
