#include "FontFile.h"

#include <ft2build.h>

#include <qpdf/QUtil.hh>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_CID_H
#include FT_OUTLINE_H

namespace pdf {

namespace {

PointD ToPoint(const FT_Vector* v) {
    return {static_cast<double>(v->x), static_cast<double>(v->y)};
}

Path& PathOf(void* user) {
    return *static_cast<Path*>(user);
}

// Append to a path what FreeType tells of an outline.
const FT_Outline_Funcs kAppend{
    [](const FT_Vector* to, void* user) {
        if (!PathOf(user).IsEmpty()) PathOf(user).Close();
        return PathOf(user).MoveTo(ToPoint(to)), 0;
    },
    [](const FT_Vector* to, void* user) { return PathOf(user).LineTo(ToPoint(to)), 0; },
    // A quadratic curve as a cubic one: its inner points lie two thirds of the way to the control point.
    [](const FT_Vector* control, const FT_Vector* to, void* user) {
        const PointD middle = ToPoint(control);
        const auto inner = [&](const PointD& end) {
            return PointD{end.x + (middle.x - end.x) * 2 / 3, end.y + (middle.y - end.y) * 2 / 3};
        };
        return PathOf(user).CurveTo(inner(PathOf(user).current), inner(ToPoint(to)), ToPoint(to)), 0;
    },
    [](const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* user) {
        return PathOf(user).CurveTo(ToPoint(first), ToPoint(second), ToPoint(to)), 0;
    },
    0, 0};

}  // namespace

std::unique_ptr<FontFile> FontFile::Open(std::string bytes) {
    std::unique_ptr<FontFile> file(new FontFile(std::move(bytes)));
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return nullptr;
    file->library_ = {library, FT_Done_FreeType};
    const auto* const data = reinterpret_cast<const FT_Byte*>(file->bytes_.data());
    FT_Face face = nullptr;
    if (FT_New_Memory_Face(library, data, static_cast<FT_Long>(file->bytes_.size()), 0, &face) != 0) return nullptr;
    file->face_ = {face, FT_Done_Face};
    if (!FT_IS_SCALABLE(face)) return nullptr;
    file->em_ = std::max<int>(face->units_per_EM, 1);
    // FreeType numbers the glyphs of a bare CFF font of this kind by their identifiers, those of a wrapped one not.
    const bool hasOtherOrder = FT_IS_CID_KEYED(face) && FT_IS_SFNT(face);
    for (FT_UInt glyph = 0; hasOtherOrder && glyph < static_cast<FT_UInt>(face->num_glyphs); ++glyph) {
        FT_UInt cid = 0;
        if (FT_Get_CID_From_Glyph_Index(face, glyph, &cid) == 0) file->glyphsOfCids_.emplace(cid, glyph);
    }
    return file;
}

unsigned int FontFile::GlyphOfName(const std::string& name) const {
    return FT_HAS_GLYPH_NAMES(face_.get()) ? FT_Get_Name_Index(face_.get(), name.c_str()) : 0;
}

unsigned int FontFile::GlyphOfUnicode(unsigned int character) const {
    if (character == 0) return 0;
    if (FT_Select_Charmap(face_.get(), FT_ENCODING_UNICODE) == 0) return FT_Get_Char_Index(face_.get(), character);
    std::string mac;
    const bool isMac = QUtil::utf8_to_mac_roman(QUtil::toUTF8(character), mac);
    if (!isMac || FT_Select_Charmap(face_.get(), FT_ENCODING_APPLE_ROMAN) != 0) return 0;
    return FT_Get_Char_Index(face_.get(), static_cast<unsigned char>(mac[0]));
}

unsigned int FontFile::GlyphOfCode(unsigned int code) const {
    bool hasCodes = false;
    for (const FT_Encoding encoding :
         {FT_ENCODING_MS_SYMBOL, FT_ENCODING_APPLE_ROMAN, FT_ENCODING_ADOBE_CUSTOM, FT_ENCODING_ADOBE_STANDARD}) {
        if (FT_Select_Charmap(face_.get(), encoding) != 0) continue;
        hasCodes = true;
        for (const unsigned int page : {0x0000U, 0xF000U, 0xF100U, 0xF200U})
            if (const unsigned int glyph = FT_Get_Char_Index(face_.get(), page + code)) return glyph;
    }
    if (hasCodes) return 0;
    if (face_->num_charmaps == 0) return code;
    return FT_Set_Charmap(face_.get(), face_->charmaps[0]) == 0 ? FT_Get_Char_Index(face_.get(), code) : 0;
}

unsigned int FontFile::GlyphOfCid(unsigned int cid) const {
    if (glyphsOfCids_.empty()) return cid;
    const auto found = glyphsOfCids_.find(cid);
    return found == glyphsOfCids_.end() ? 0 : found->second;
}

const Path& FontFile::Outline(unsigned int glyph) {
    const auto [entry, isNew] = outlines_.try_emplace(glyph);
    if (!isNew || FT_Load_Glyph(face_.get(), glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP) != 0 ||
        face_->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        return entry->second;
    Path inUnits;
    FT_Outline_Decompose(&face_->glyph->outline, &kAppend, &inUnits);
    if (!inUnits.IsEmpty()) inUnits.Close();
    entry->second.Append(inUnits, {1 / em_, 0, 0, 1 / em_, 0, 0});
    return entry->second;
}

double FontFile::Advance(unsigned int glyph) const {
    FT_Fixed advance = 0;
    if (FT_Get_Advance(face_.get(), glyph, FT_LOAD_NO_SCALE, &advance) != 0) return 0;
    return static_cast<double>(advance) / em_;
}

}  // namespace pdf
