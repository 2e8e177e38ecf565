#include "Canvas.h"

#include <vantu/CIdentityPDFTransferFunction.h>

#include <cmath>

namespace pdf {

namespace {

using vantu::Paint;

constexpr double kMost = 255;
// What is clear is no part of an element of a knockout group; what is so nearly clear in a mask is.
constexpr unsigned char kBarelyOpaque = 2;

}  // namespace

Canvas::Canvas(const Image& page, const Pixels& visible, Calls& calls)
    : painter_(page), groups_{{.shape = {visible, nullptr}}}, calls_(calls), kept_(calls.ListOf(page, visible)) {
    painter_.SetClip({visible});
}

// A mask's samples are greys: the identity of luminosity makes them opacities.
Paint Canvas::PaintOf(const Mask& shape, const Placing& placing) const {
    static const std::shared_ptr<vantu::IPDFTransferFunction> identity =
        std::make_shared<vantu::CIdentityPDFTransferFunction>(vantu::IPDFTransferFunction::SourceType::Luminosity);
    const bool isThereIfClear = IsKnockout() && !placing.alphaIsShape;
    Mask mask = HasHardEdges() ? HardEdged(shape) : shape;
    if (placing.softMask)
        mask = Intersect(mask, isThereIfClear ? AtLeast(*placing.softMask, kBarelyOpaque) : *placing.softMask);
    Paint paint;
    paint.mode = placing.mode;
    paint.alpha = static_cast<unsigned char>(std::max(std::lround(placing.alpha * kMost), isThereIfClear ? 1L : 0L));
    if (IsEmpty(mask.box)) paint.alpha = 0;
    if (mask.image) {
        paint.mask = mask.image;
        paint.maskAt = {mask.box.x0, mask.box.y0};
        paint.maskTransfer = identity;
    }
    return paint;
}

// Where it cannot be seen a call need not paint.
void Canvas::Make(Call call) {
    call.box = Intersect(call.box, Visible());
    const auto start = Calls::Clock::now();
    pdf::Make(call, painter_);
    calls_.Add(call, Calls::Clock::now() - start);
    if (kept_ != nullptr) kept_->calls.push_back(std::move(call));
}

void Canvas::Fill(const vantu::Color& color, const Mask& shape, const Placing& placing) {
    Make({.what = Call::What::Fill, .box = shape.box, .paint = PaintOf(shape, placing), .color = color});
}

void Canvas::Draw(const Image& picture, const vantu::Point<int, 2>& at, const Mask& shape, const Placing& placing) {
    if (!picture) return;
    Make({.what = Call::What::Draw, .box = shape.box, .paint = PaintOf(shape, placing), .picture = picture, .at = at});
}

void Canvas::BeginGroup(const Mask& shape, vantu::GroupKind kind) {
    const Group& around = groups_.back();
    // A group starts on what a knockout group around it started on: on nothing if that is isolated.
    kind.isolated = kind.isolated || (around.kind.knockout && around.kind.isolated);
    Make({.what = Call::What::BeginGroup, .box = shape.box, .group = kind});
    const bool isTakenOut = !kind.isolated && !kind.normal && !kind.plain;
    groups_.push_back({.shape = shape,
                       .kind = kind,
                       .insideKnockout = around.insideKnockout || kind.knockout,
                       .hasHardEdges = around.hasHardEdges || kind.knockout || isTakenOut});
}

void Canvas::EndGroup(const Placing& placing) {
    const Mask shape = groups_.back().shape;
    groups_.pop_back();
    Make({.what = Call::What::EndGroup, .box = shape.box, .paint = PaintOf(shape, placing)});
}

}  // namespace pdf
