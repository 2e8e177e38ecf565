#include "Interpreter.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr int kInvisible = 3;
constexpr double kThousandths = 1000;

// Text render modes 0 to 7: fill, stroke, both, neither; from 4 on the same, and added to the clip.
bool Fills(int mode) {
    return mode % 4 == 0 || mode % 4 == 2;
}
bool Strokes(int mode) {
    return mode % 4 == 1 || mode % 4 == 2;
}
bool Clips(int mode) {
    return mode >= 4 && mode <= 7;
}

}  // namespace

void Interpreter::SetFont(QPDFObjectHandle font, double size) {
    state_.text.font = page_.fonts.Get(font, page_.notes);
    state_.text.size = size;
}

void Interpreter::MoveLine(const PointD& by) {
    lineMatrix_ = Concat({1, 0, 0, 1, by.x, by.y}, lineMatrix_);
    textMatrix_ = lineMatrix_;
}

void Interpreter::NextLine() {
    MoveLine({0, -state_.text.leading});
}

void Interpreter::ShowAdjustedText(QPDFObjectHandle pieces) {
    for (QPDFObjectHandle& piece : Items(pieces)) {
        if (piece.isString()) {
            ShowText(piece.getStringValue());
            continue;
        }
        Advance(-ToNumber(piece, 0) / kThousandths * state_.text.size);
    }
}

void Interpreter::Advance(double length) {
    const bool isVertical = state_.text.font && state_.text.font->isVertical;
    const PointD by = isVertical ? PointD{0, length} : PointD{length * state_.text.horizontalScale, 0};
    textMatrix_ = Concat({1, 0, 0, 1, by.x, by.y}, textMatrix_);
}

void Interpreter::ShowText(const std::string& text) {
    const TextState& t = state_.text;
    if (!t.font) return;
    const std::shared_ptr<const Font> font = t.font;
    for (std::size_t position = 0; position < text.size();) {
        Glyph glyph = font->next(text, position);
        page_.budget.Spend(1);
        const Matrix emsToText{t.size * t.horizontalScale, 0, 0, t.size, 0, t.rise};
        const Matrix emsToUser = Concat(emsToText, textMatrix_);
        const Matrix placed = Concat({glyph.stretch, 0, 0, 1, glyph.origin.x, glyph.origin.y}, emsToUser);
        if (glyph.outline)
            text_.Append(*glyph.outline, placed);
        else if (glyph.content.isStream() && t.renderMode != kInvisible)
            PaintGlyphContent(glyph, Concat(font->toEms, placed));
        if (!t.knockout) PaintText();
        const double spacing = t.characterSpacing + (glyph.isSpace ? t.wordSpacing : 0);
        Advance((font->isVertical ? glyph.advance.y : glyph.advance.x) * t.size + spacing);
    }
}

void Interpreter::PaintText() {
    const int mode = state_.text.renderMode;
    PaintOutline(text_, state_.toDevice, Fills(mode), false, Strokes(mode));
    if (Clips(mode)) textClip_.Append(text_, state_.toDevice);
    text_ = {};
}

void Interpreter::PaintGlyphContent(const Glyph& glyph, const Matrix& toUser) {
    if (IsHidden()) return;
    GraphicsState inside = state_;
    inside.toDevice = Concat(toUser, state_.toDevice);
    QPDFObjectHandle own = state_.text.font->resources;
    Interpreter content(page_, canvas_, own.isDictionary() ? own : resources_, inside, colorless_);
    content.PaintOnce(glyph.content);
}

void Interpreter::EndText() {
    if (!textClip_.IsEmpty()) ClipTo(textClip_, {}, false);
    textClip_ = {};
}

}  // namespace pdf
