#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "FontFile.h"
#include "Geometry.h"
#include "Notes.h"
#include "Path.h"
#include "Qpdf.h"

namespace pdf {

// One glyph of a text.
struct Glyph {
    const Path* outline = nullptr;  // one unit an em; lives as long as the font. Null of a Type 3 glyph
    QPDFObjectHandle content = {};  // of a Type 3 glyph; else null
    PointD advance = {};            // in ems, to the right or down
    double stretch = 1;             // by how much the outline is made wider
    PointD origin = {};             // of the glyph on the line, in ems
    bool isSpace = false;           // whether word spacing counts
};

// A font as text uses it. One thread at a time.
struct Font {
    // The glyph at a position of a text; moves the position behind its code. REQUIRES: position < text.size().
    std::function<Glyph(const std::string& text, std::size_t& position)> next = {};
    bool isVertical = false;
    Matrix toEms = {};                // from the space of outlines and contents
    QPDFObjectHandle resources = {};  // of Type 3 glyphs; null for those of the page
};

// The fonts of a document, each made once. One thread at a time.
class FontCache {
public:
    // The font of a dictionary; empty if nothing can be painted with it, which is noted.
    std::shared_ptr<const Font> Get(QPDFObjectHandle dictionary, Notes& notes);

private:
    std::map<std::string, std::shared_ptr<const Font>> fonts_;  // by the reference or the text of the dictionary
};

// The program of a font that is in the file; empty if there is none or, with a note, if it cannot be read.
// @param font a simple font's dictionary, or that of a composite font's descendant.
std::unique_ptr<FontFile> OpenEmbedded(QPDFObjectHandle font, Notes& notes);

// A font of the system that has the widths of a standard font, or looks alike, with a note; empty if it is not there.
std::unique_ptr<FontFile> OpenReplacement(QPDFObjectHandle font, Notes& notes);

// The font of a composite font's dictionary; empty, with a note, if it has no program or codes that are not known.
std::shared_ptr<const Font> MakeCompositeFont(QPDFObjectHandle dictionary, Notes& notes);

}  // namespace pdf
