#include "Canvas.h"

#include <vantu/CIdentityPDFTransferFunction.h>

#include <cmath>

namespace pdf {

namespace {

using vantu::Paint;

constexpr double kMost = 255;

// Samples of a mask are its greys: the identity of luminosity makes them opacities.
Paint ToPaint(const Mask& mask, const Placing& placing) {
    static const std::shared_ptr<vantu::IPDFTransferFunction> identity =
        std::make_shared<vantu::CIdentityPDFTransferFunction>(vantu::IPDFTransferFunction::SourceType::Luminosity);
    Paint paint;
    paint.mode = placing.mode;
    paint.alpha = static_cast<unsigned char>(std::lround(placing.alpha * kMost));
    if (mask.image) {
        paint.mask = mask.image;
        paint.maskAt = {mask.box.x0, mask.box.y0};
        paint.maskTransfer = identity;
    }
    return paint;
}

const char* const kModeNames[vantu::kBlendModeCount] = {"Normal",    "Multiply",  "Screen",     "Overlay",
                                                        "Darken",    "Lighten",   "ColorDodge", "ColorBurn",
                                                        "HardLight", "SoftLight", "Difference", "Exclusion"};

// Sizes in powers of four, told by the edge of a square.
const char* SizeOf(unsigned long pixels) {
    if (pixels <= 16UL * 16) return "to 16x16";
    if (pixels <= 64UL * 64) return "to 64x64";
    return pixels <= 256UL * 256 ? "to 256x256" : "larger";
}

}  // namespace

Canvas::Canvas(const Image& page, const Pixels& visible, Calls* calls)
    : painter_(page), groups_{{visible, false}}, calls_(calls) {
    painter_.SetClip({visible});
}

template <typename Call>
void Canvas::Count(const char* what, const Pixels& area, bool masked, const Placing& placing, Call call) {
    if (calls_ == nullptr) {
        call();
        return;
    }
    const auto start = Calls::Clock::now();
    call();
    const auto time = Calls::Clock::now() - start;
    const Pixels seen = Intersect(area, Visible());
    const unsigned long pixels =
        IsEmpty(seen) ? 0 : static_cast<unsigned long>(Width(seen)) * static_cast<unsigned long>(Height(seen));
    calls_->Add(std::string(what) + ", " + kModeNames[static_cast<unsigned int>(placing.mode)] +
                    (placing.alpha < 1 ? ", translucent" : "") + (masked ? ", mask" : "") + ", " + SizeOf(pixels),
                pixels, time);
}

void Canvas::Fill(const vantu::Color& color, const Mask& mask, const Placing& placing) {
    Count("colour", mask.box, mask.image != nullptr, placing,
          [&] { painter_.Fill(mask.box, color, ToPaint(mask, placing)); });
}

void Canvas::Draw(const Image& picture, const vantu::Point<int, 2>& at, const Mask& mask, const Placing& placing) {
    if (!picture || IsEmpty(mask.box)) return;
    Count("picture", mask.box, mask.image != nullptr, placing,
          [&] { painter_.Draw(picture, at, ToPaint(mask, placing)); });
}

void Canvas::BeginGroup(const Pixels& bounds, const vantu::GroupKind& kind) {
    Count(kind.knockout ? "begin a knockout group" : "begin a group", bounds, false, {},
          [&] { painter_.BeginGroup(bounds, kind); });
    groups_.push_back({Intersect(bounds, Visible()), kind.knockout});
}

void Canvas::EndGroup(const Mask& mask, const Placing& placing) {
    const Pixels area = Visible();
    groups_.pop_back();
    Count("end a group", area, mask.image != nullptr, placing, [&] { painter_.EndGroup(ToPaint(mask, placing)); });
}

}  // namespace pdf
