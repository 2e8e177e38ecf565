#pragma once

#include <map>
#include <memory>
#include <string>

#include "Path.h"

struct FT_LibraryRec_;
struct FT_FaceRec_;

namespace pdf {

// A font program: TrueType, CFF, OpenType or Type 1. Glyph 0 stands for none. One thread at a time.
class FontFile {
public:
    // @return empty if FreeType cannot read it, or if its glyphs have no outlines.
    static std::unique_ptr<FontFile> Open(std::string bytes);

    [[nodiscard]] unsigned int GlyphOfName(const std::string& name) const;
    // By a table of Unicode, or else of Mac codes.
    [[nodiscard]] unsigned int GlyphOfUnicode(unsigned int character) const;
    // By the font's own codes: a table of symbols, of Mac codes or the encoding of a Type 1 font, or else whatever
    // table there is; without tables glyphs are in the order of codes.
    [[nodiscard]] unsigned int GlyphOfCode(unsigned int code) const;
    // What a composite font's character identifier leads to where the PDF file has no table.
    [[nodiscard]] unsigned int GlyphOfCid(unsigned int cid) const;

    // The outline of a glyph, one unit an em, upward; empty if it has none or cannot be read.
    const Path& Outline(unsigned int glyph);
    // How far a glyph advances, in ems.
    [[nodiscard]] double Advance(unsigned int glyph) const;

private:
    explicit FontFile(std::string bytes) : bytes_(std::move(bytes)) {}

    std::string bytes_;  // the face reads them as long as it lives
    std::shared_ptr<FT_LibraryRec_> library_;
    std::shared_ptr<FT_FaceRec_> face_;
    double em_ = 1;                                      // in the units of outlines
    std::map<unsigned int, unsigned int> glyphsOfCids_;  // of fonts whose glyphs are in another order
    std::map<unsigned int, Path> outlines_;
};

}  // namespace pdf
