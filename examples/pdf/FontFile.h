#pragma once

#include <map>
#include <memory>
#include <string>

#include "Path.h"

struct FT_LibraryRec_;
struct FT_FaceRec_;

namespace pdf {

// The FreeType library, held by all its fonts. One thread at a time.
std::shared_ptr<FT_LibraryRec_> OpenFreeType();

// A font program: TrueType, CFF, OpenType or Type 1. Glyph 0 stands for none. One thread at a time.
class FontFile {
public:
    // @return empty if FreeType cannot read it, or if its glyphs have no outlines.
    static std::unique_ptr<FontFile> FromBytes(std::shared_ptr<FT_LibraryRec_> library, std::string bytes);
    static std::unique_ptr<FontFile> FromPath(std::shared_ptr<FT_LibraryRec_> library, const std::string& path);

    [[nodiscard]] unsigned int GlyphOfName(const std::string& name) const;
    [[nodiscard]] unsigned int GlyphOfUnicode(unsigned int character) const;
    // By the table of Mac codes, of symbol codes, and by the font's own encoding.
    [[nodiscard]] unsigned int GlyphOfMacCode(unsigned int code) const;
    [[nodiscard]] unsigned int GlyphOfSymbolCode(unsigned int code) const;
    [[nodiscard]] unsigned int GlyphOfBuiltInCode(unsigned int code) const;
    // What a composite font's character identifier leads to where the PDF file has no table.
    [[nodiscard]] unsigned int GlyphOfCid(unsigned int cid) const;

    // The outline of a glyph, one unit an em, upward; empty if it has none or cannot be read.
    const Path& Outline(unsigned int glyph);
    // How far a glyph advances, in ems.
    [[nodiscard]] double Advance(unsigned int glyph) const;

private:
    FontFile(std::shared_ptr<FT_LibraryRec_> library, std::string bytes, std::shared_ptr<FT_FaceRec_> face);
    [[nodiscard]] unsigned int GlyphOf(int platform, int encoding, unsigned int code) const;

    std::shared_ptr<FT_LibraryRec_> library_;
    std::string bytes_;  // the face reads them as long as it lives
    std::shared_ptr<FT_FaceRec_> face_;
    std::map<unsigned int, unsigned int> glyphsOfCids_;  // of fonts whose glyphs are in another order
    std::map<unsigned int, Path> outlines_;
};

}  // namespace pdf
