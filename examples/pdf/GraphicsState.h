#pragma once

#include <vantu/BlendMode.h>

#include <memory>
#include <optional>
#include <vector>

#include "ColorSpaces.h"
#include "Mask.h"
#include "Outlines.h"
#include "Qpdf.h"

namespace pdf {

struct Font;

// What a fill or a stroke is painted with.
struct Ink {
    std::shared_ptr<const ColorSpace> space = ColorSpace::Device(1);
    std::vector<double> components{0};
    QPDFObjectHandle pattern = {};  // null unless the space is one of patterns
    Matrix patternToDevice = {};    // that of the content in which the pattern was set
    double alpha = 1;
};

// A soft mask as ExtGState names it. Its picture is made when it is first needed and shared by all states that have it.
struct SoftMask {
    QPDFObjectHandle dictionary;
    Matrix toDevice;           // when it was set
    std::optional<Mask> mask;  // once it is made
};

struct TextState {
    std::shared_ptr<const Font> font;
    double size = 0;
    double characterSpacing = 0;
    double wordSpacing = 0;
    double horizontalScale = 1;
    double leading = 0;
    double rise = 0;
    int renderMode = 0;
    bool knockout = true;  // glyphs that are shown one after the other are one object
};

// What q saves and Q restores. A page, a soft mask's group and a tile start with black, opaque, and a clip of the
// pixels that can be painted on.
struct GraphicsState {
    Matrix toDevice;
    Mask clip;
    Ink fill = {};
    Ink stroke = {};
    StrokeStyle line = {};
    vantu::BlendMode mode = vantu::BlendMode::Normal;
    std::shared_ptr<SoftMask> softMask = nullptr;  // empty for none
    bool alphaIsShape = false;
    TextState text = {};
};

}  // namespace pdf
