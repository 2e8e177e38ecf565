#include "Canvas.h"

#include <vantu/CIdentityPDFTransferFunction.h>

#include <cmath>

namespace pdf {

namespace {

using vantu::Paint;

constexpr double kMost = 255;
// What is clear in a mask is no part of an element of a knockout group; what is so nearly clear is.
constexpr unsigned char kBarelyOpaque = 2;

// Sizes in powers of four, told by the edge of a square.
const char* SizeOf(unsigned long pixels) {
    if (pixels <= 16UL * 16) return "to 16x16";
    if (pixels <= 64UL * 64) return "to 64x64";
    return pixels <= 256UL * 256 ? "to 256x256" : "larger";
}

}  // namespace

Canvas::Canvas(const Image& page, const Pixels& visible, Calls* calls)
    : painter_(page), groups_{{{visible, nullptr}, false}}, calls_(calls) {
    painter_.SetClip({visible});
}

// A mask's samples are greys: the identity of luminosity makes them opacities.
Paint Canvas::PaintOf(const Mask& shape, const Placing& placing) const {
    static const std::shared_ptr<vantu::IPDFTransferFunction> identity =
        std::make_shared<vantu::CIdentityPDFTransferFunction>(vantu::IPDFTransferFunction::SourceType::Luminosity);
    Mask mask{shape.box, IsKnockout() ? nullptr : shape.image};
    if (placing.softMask) mask = Intersect(mask, *placing.softMask);
    if (IsKnockout() && !placing.softMaskIsShape) mask = AtLeast(mask, kBarelyOpaque);
    Paint paint;
    paint.mode = placing.mode;
    paint.alpha = IsEmpty(mask.box) ? 0 : static_cast<unsigned char>(std::lround(placing.alpha * kMost));
    if (mask.image) {
        paint.mask = mask.image;
        paint.maskAt = {mask.box.x0, mask.box.y0};
        paint.maskTransfer = identity;
    }
    return paint;
}

template <typename Call>
void Canvas::Count(const char* what, const Mask& shape, const Placing& placing, Call call) {
    if (calls_ == nullptr) {
        call();
        return;
    }
    const auto start = Calls::Clock::now();
    call();
    const auto time = Calls::Clock::now() - start;
    const Pixels seen = Intersect(shape.box, Visible());
    const unsigned long pixels =
        IsEmpty(seen) ? 0 : static_cast<unsigned long>(Width(seen)) * static_cast<unsigned long>(Height(seen));
    calls_->Add(std::string(what) + ", " + vantu::kBlendModeNames[static_cast<unsigned int>(placing.mode)] +
                    (placing.alpha < 1 ? ", translucent" : "") +
                    (shape.image || placing.softMask ? ", 8-bit mask" : "") + ", " + SizeOf(pixels),
                pixels, time);
}

void Canvas::Fill(const vantu::Color& color, const Mask& shape, const Placing& placing) {
    const Paint paint = PaintOf(shape, placing);
    Count("colour", shape, placing, [&] {
        if (IsKnockout() && shape.image)
            painter_.Fill(RunsOf(shape), color, paint);
        else
            painter_.Fill(shape.box, color, paint);
    });
}

void Canvas::Draw(const Image& picture, const vantu::Point<int, 2>& at, const Mask& shape, const Placing& placing) {
    if (!picture || IsEmpty(shape.box)) return;
    const Paint paint = PaintOf(shape, placing);
    Count("32-bit picture", shape, placing, [&] {
        if (IsKnockout()) painter_.SetClip(RunsOf(shape));
        painter_.Draw(picture, at, paint);
        if (IsKnockout()) painter_.ClearClip();  // in a group, to the group
    });
}

void Canvas::BeginGroup(const Mask& shape, const vantu::GroupKind& kind) {
    Count(kind.isolated   ? kind.knockout ? "begin an isolated knockout group" : "begin an isolated group"
          : kind.knockout ? "begin a knockout group"
                          : "begin a group",
          shape, {}, [&] {
              if (IsKnockout()) painter_.SetClip(RunsOf(shape));
              painter_.BeginGroup(shape.box, kind);
          });
    groups_.push_back({shape, IsKnockout() || kind.knockout});
}

void Canvas::EndGroup(const Placing& placing) {
    const Mask shape = groups_.back().shape;
    groups_.pop_back();
    Count("end a group", shape, placing, [&] {
        painter_.EndGroup(PaintOf(shape, placing));
        if (IsKnockout()) painter_.ClearClip();
    });
}

}  // namespace pdf
