#include <vantu/Painter.h>

#include "painter/PainterImplementation.h"

namespace vantu {

const char* TextOf(PaintResult result) {
    switch (result) {
        case PaintResult::Painted: return "painted";
        case PaintResult::GroupBegun: return "a group is open";
        case PaintResult::NothingToPaint: return "nothing to paint: all of it is outside, or its alpha is 0";
        case PaintResult::NoPixels: return "the page, the picture or the mask has no pixels in memory";
        case PaintResult::TooWide: return "the page, the picture or the mask has rows of 2^31 bits or more";
        case PaintResult::SourceFormat: return "pictures of this format are not painted: copy them into another";
        case PaintResult::TargetFormat: return "pages of this format are not painted on";
        case PaintResult::MaskFormat: return "the mask's format is none";
        case PaintResult::MaskWithoutFunction: return "a soft mask needs a transfer function";
        case PaintResult::NoSuchMode: return "there is no such blend mode";
        case PaintResult::PlainGroup:
            return "a normal group ends with Normal, a plain one with alpha 255 and no mask, too";
        case PaintResult::NoGroup: return "no group is open";
    }
    return "no result";
}

Painter::Painter(std::shared_ptr<IQorImage> page)
    : implementation_(std::make_unique<Implementation>(std::move(page), nullptr, Rectangle{})) {}

Painter::Painter(std::shared_ptr<RasterSurface> surface, const Rectangle& bounds)
    : implementation_(std::make_unique<Implementation>(nullptr, std::move(surface), bounds)) {}

Painter::Painter(Painter&&) noexcept = default;
Painter& Painter::operator=(Painter&&) noexcept = default;
Painter::~Painter() = default;

void Painter::SetClip(const std::vector<Rectangle>& rectangles) {
    implementation_->SetClip(rectangles);
}

void Painter::ClearClip() {
    implementation_->ClearClip();
}

PaintResult Painter::Draw(const std::shared_ptr<IQorImage>& picture, const Point<int, 2>& at, const Paint& paint) {
    return implementation_->Draw(picture, at, paint);
}

PaintResult Painter::Fill(const Rectangle& rectangle, const Color& color, const Paint& paint) {
    return implementation_->Fill({&rectangle, 1}, color, paint);
}

PaintResult Painter::Fill(const std::vector<Rectangle>& rectangles, const Color& color, const Paint& paint) {
    return implementation_->Fill(rectangles, color, paint);
}

PaintResult Painter::BeginGroup(const Rectangle& bounds, const GroupKind& kind) {
    return implementation_->BeginGroup(bounds, kind);
}

PaintResult Painter::EndGroup(const Paint& paint) {
    return implementation_->EndGroup(paint);
}

unsigned int Painter::GetGroupDepth() const {
    return static_cast<unsigned int>(implementation_->GroupDepth());
}

}  // namespace vantu
