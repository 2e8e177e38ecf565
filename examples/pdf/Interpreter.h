#pragma once

#include <map>
#include <string>
#include <vector>

#include "Canvas.h"
#include "ContentReader.h"
#include "Document.h"
#include "Fonts.h"
#include "GraphicsState.h"
#include "Images.h"
#include "Notes.h"
#include "PictureReader.h"
#include "Transparency.h"

namespace pdf {

// What a thread paints pages of one file with: what it has read of the file, may spend on the page and has to tell.
struct PageContext {
    // @throws std::exception with a text for people if the file cannot be read.
    explicit PageContext(const std::string& path) : document(path) {}

    Document document;
    ContentReader contents = {};
    FontCache fonts = {};
    PictureCache pictures = {};
    BlendModeUse blendModes = {};
    Notes notes = {};
    Calls calls = {};
    Budget budget = {};
};

// Paints one content stream: that of a page, a form, a tile of a pattern or a glyph. Each has its own resources and
// its own stack of graphics states. The members stand in files of one idea each:
//   Interpreter.cpp    operators, graphics state, colours, marked content
//   PathPainting.cpp   paths, pictures, shadings
//   Groups.cpp         forms, transparency groups, soft masks
//   Tiling.cpp         tiling patterns
//   TextPainting.cpp   text
class Interpreter {
public:
    // @param canvas, state what the content is painted on and starts with.
    // @param colorless whether the content has no colour of its own: operators that set one are left out.
    Interpreter(PageContext& page, Canvas& canvas, QPDFObjectHandle resources, const GraphicsState& state,
                bool colorless = false);

    // Reads and paints a content stream.
    void Paint(QPDFObjectHandle content);
    // The same of one that has a use of its own. Inside itself it is left out. The stream of a page may be a form, too.
    void PaintOnce(QPDFObjectHandle content);
    // Paints a form in the present state, as the operator Do does.
    void PaintForm(QPDFObjectHandle form);
    // Paints the content of a form or a tile, inside its box, as if it were no group.
    // @param inside what it starts with, its own matrix included.
    void PaintContentOf(QPDFObjectHandle form, const GraphicsState& inside);

private:
    using Action = void (*)(Interpreter&, const Operands&);
    static const std::map<std::string, Action>& Operators();

    QPDFObjectHandle Resource(const char* kind, QPDFObjectHandle name) const;
    void RestoreState();
    void SetDashes(QPDFObjectHandle lengths, double phase);
    void SetParameters(QPDFObjectHandle dictionary);
    void SetSpace(Ink& ink, QPDFObjectHandle space);
    void SetColor(Ink& ink, const Operands& operands);
    void SetDeviceColor(Ink& ink, const char* space, const Operands& operands);
    void BeginMarkedContent(const Operands& operands);

    enum class PendingClip { None, NonZero, EvenOdd };
    void PaintPath(bool fill, bool evenOdd, bool stroke);
    void ClipTo(const Path& path, const Matrix& toDevice, bool evenOdd);
    void PaintOutline(const Path& path, const Matrix& toDevice, bool fill, bool evenOdd, bool stroke);
    void PaintShape(const Mask& shape, const Ink& ink);
    void PaintImage(const PlacedImage& placed, const Mask& within, const Ink& ink);
    void PaintPicture(QPDFObjectHandle picture);
    void PaintShadingOf(QPDFObjectHandle shading);
    Placing PlacingOf(const Ink& ink);
    // The pixels that can be painted on at the moment.
    [[nodiscard]] Pixels Visible() const { return Intersect(state_.clip.box, canvas_.Visible()); }
    // Takes the painting of an area, so many times as long as that of one colour, from the budget.
    void Spend(const Pixels& area, double times) {
        if (!IsEmpty(area)) page_.budget.Spend(times * Width(area) * Height(area));
    }
    [[nodiscard]] bool IsHidden() const { return hiddenDepth_ > 0; }

    void PaintObject(QPDFObjectHandle object);
    void PaintGroup(QPDFObjectHandle form, GraphicsState inside);
    // Opens a group that ends with the present mode.
    void BeginGroup(const Mask& shape, bool isolated, bool knockout);
    [[nodiscard]] Mask Clipped(const Mask& shape) const { return Intersect(shape, state_.clip); }
    const Mask& MaskOf(SoftMask& softMask);

    void PaintTiles(const Mask& mask, const Ink& ink);

    void SetFont(QPDFObjectHandle font, double size);
    void MoveLine(const PointD& by);
    void NextLine();
    void ShowText(const std::string& text);
    void ShowAdjustedText(QPDFObjectHandle pieces);
    // Moves along the line, by a length before it is scaled.
    void Advance(double length);
    void PaintText();
    void PaintGlyphContent(const Glyph& glyph, const Matrix& toUser);
    void EndText();

    PageContext& page_;
    Canvas& canvas_;
    QPDFObjectHandle resources_;
    GraphicsState state_;
    std::vector<GraphicsState> saved_;
    Matrix baseToDevice_;  // from the space that this content started in, which is that of its patterns
    std::map<std::string, ColorSpace::Pointer> spaces_;  // by their names here
    Path path_;
    PendingClip pendingClip_ = PendingClip::None;
    Matrix textMatrix_;
    Matrix lineMatrix_;
    Path text_;            // in user space, shown and not yet painted
    Path textClip_;        // in device space
    int hiddenDepth_ = 0;  // marked content that is open, from the outermost that is hidden
    bool colorless_;
};

}  // namespace pdf
