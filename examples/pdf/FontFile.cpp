#include "FontFile.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_CID_H
#include FT_OUTLINE_H

namespace pdf {

namespace {

constexpr int kMicrosoft = 3;
constexpr int kMacintosh = 1;

// Collects an outline, in ems.
struct Collector {
    Path* path;
    double scale;

    [[nodiscard]] PointD ToEms(const FT_Vector& v) const {
        return {static_cast<double>(v.x) * scale, static_cast<double>(v.y) * scale};
    }
};

Collector& CollectorOf(void* user) {
    return *static_cast<Collector*>(user);
}

int MoveTo(const FT_Vector* to, void* user) {
    Collector& c = CollectorOf(user);
    if (!c.path->IsEmpty()) c.path->Close();
    c.path->MoveTo(c.ToEms(*to));
    return 0;
}

int LineTo(const FT_Vector* to, void* user) {
    CollectorOf(user).path->LineTo(CollectorOf(user).ToEms(*to));
    return 0;
}

// A quadratic curve as a cubic one: its inner points lie two thirds of the way to the control point.
int ConicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
    Collector& c = CollectorOf(user);
    const PointD from = c.path->current;
    const PointD middle = c.ToEms(*control);
    const PointD end = c.ToEms(*to);
    c.path->CurveTo({from.x + (middle.x - from.x) * 2 / 3, from.y + (middle.y - from.y) * 2 / 3},
                    {end.x + (middle.x - end.x) * 2 / 3, end.y + (middle.y - end.y) * 2 / 3}, end);
    return 0;
}

int CubicTo(const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* user) {
    Collector& c = CollectorOf(user);
    c.path->CurveTo(c.ToEms(*first), c.ToEms(*second), c.ToEms(*to));
    return 0;
}

std::shared_ptr<FT_FaceRec_> Hold(FT_Face face) {
    return {face, [](FT_Face f) { FT_Done_Face(f); }};
}

}  // namespace

std::shared_ptr<FT_LibraryRec_> OpenFreeType() {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) throw std::bad_alloc();
    return {library, [](FT_Library l) { FT_Done_FreeType(l); }};
}

FontFile::FontFile(std::shared_ptr<FT_LibraryRec_> library, std::string bytes, std::shared_ptr<FT_FaceRec_> face)
    : library_(std::move(library)), bytes_(std::move(bytes)), face_(std::move(face)) {
    // FreeType numbers the glyphs of a bare CFF font of this kind by their identifiers, those of a wrapped one not.
    if (!FT_IS_CID_KEYED(face_.get()) || !FT_IS_SFNT(face_.get())) return;
    for (FT_Long glyph = 0; glyph < face_->num_glyphs; ++glyph) {
        FT_UInt cid = 0;
        const auto number = static_cast<FT_UInt>(glyph);
        if (FT_Get_CID_From_Glyph_Index(face_.get(), number, &cid) == 0) glyphsOfCids_.emplace(cid, number);
    }
}

std::unique_ptr<FontFile> FontFile::FromBytes(std::shared_ptr<FT_LibraryRec_> library, std::string bytes) {
    FT_Face face = nullptr;
    // A string that is moved keeps its bytes where they are, unless it is too short to be a font.
    const auto* const data = reinterpret_cast<const FT_Byte*>(bytes.data());
    if (bytes.size() < sizeof(std::string) ||
        FT_New_Memory_Face(library.get(), data, static_cast<FT_Long>(bytes.size()), 0, &face) != 0)
        return nullptr;
    std::unique_ptr<FontFile> file(new FontFile(std::move(library), std::move(bytes), Hold(face)));
    return FT_IS_SCALABLE(face) ? std::move(file) : nullptr;
}

std::unique_ptr<FontFile> FontFile::FromPath(std::shared_ptr<FT_LibraryRec_> library, const std::string& path) {
    FT_Face face = nullptr;
    if (FT_New_Face(library.get(), path.c_str(), 0, &face) != 0) return nullptr;
    return std::unique_ptr<FontFile>(new FontFile(std::move(library), {}, Hold(face)));
}

unsigned int FontFile::GlyphOfName(const std::string& name) const {
    if (name == ".notdef" || !FT_HAS_GLYPH_NAMES(face_.get())) return 0;
    return FT_Get_Name_Index(face_.get(), name.c_str());
}

unsigned int FontFile::GlyphOf(int platform, int encoding, unsigned int code) const {
    for (int i = 0; i < face_->num_charmaps; ++i) {
        FT_CharMap map = face_->charmaps[i];
        if (map->platform_id != platform || map->encoding_id != encoding) continue;
        return FT_Set_Charmap(face_.get(), map) == 0 ? FT_Get_Char_Index(face_.get(), code) : 0;
    }
    return 0;
}

unsigned int FontFile::GlyphOfUnicode(unsigned int character) const {
    if (character == 0 || FT_Select_Charmap(face_.get(), FT_ENCODING_UNICODE) != 0) return 0;
    return FT_Get_Char_Index(face_.get(), character);
}

unsigned int FontFile::GlyphOfMacCode(unsigned int code) const {
    return GlyphOf(kMacintosh, 0, code);
}

unsigned int FontFile::GlyphOfSymbolCode(unsigned int code) const {
    for (const unsigned int page : {0x0000U, 0xF000U, 0xF100U, 0xF200U}) {
        if (const unsigned int glyph = GlyphOf(kMicrosoft, 0, page + code)) return glyph;
    }
    return 0;
}

unsigned int FontFile::GlyphOfBuiltInCode(unsigned int code) const {
    for (const FT_Encoding encoding : {FT_ENCODING_ADOBE_CUSTOM, FT_ENCODING_ADOBE_STANDARD}) {
        if (FT_Select_Charmap(face_.get(), encoding) == 0) return FT_Get_Char_Index(face_.get(), code);
    }
    return 0;
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
    Collector collector{&entry->second, 1.0 / std::max<int>(face_->units_per_EM, 1)};
    const FT_Outline_Funcs functions{MoveTo, LineTo, ConicTo, CubicTo, 0, 0};
    FT_Outline_Decompose(&face_->glyph->outline, &functions, &collector);
    if (!entry->second.IsEmpty()) entry->second.Close();
    return entry->second;
}

double FontFile::Advance(unsigned int glyph) const {
    FT_Fixed advance = 0;
    if (FT_Get_Advance(face_.get(), glyph, FT_LOAD_NO_SCALE, &advance) != 0) return 0;
    return static_cast<double>(advance) / std::max<int>(face_->units_per_EM, 1);
}

}  // namespace pdf
