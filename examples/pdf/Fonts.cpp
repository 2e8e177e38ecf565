#include "Fonts.h"

#include <array>

#include "Encodings.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr double kThousandths = 1000;
constexpr int kSymbolicFlag = 4;

// The widths of a simple font's codes in its own units; negative where the font says none.
std::array<double, 256> WidthsOf(QPDFObjectHandle font) {
    std::array<double, 256> widths{};
    const std::vector<double> given = ToNumbers(Entry(font, "/Widths"));
    const int first = ToInteger(Entry(font, "/FirstChar"), 0);
    widths.fill(given.empty() ? -1 : ToNumber(Entry(Entry(font, "/FontDescriptor"), "/MissingWidth"), 0));
    for (std::size_t i = 0; i < given.size(); ++i) {
        const std::int64_t code = first + static_cast<std::int64_t>(i);
        if (code >= 0 && code < 256) widths[static_cast<std::size_t>(code)] = given[i];
    }
    return widths;
}

using Glyphs = std::array<Glyph, 256>;

// Makes single bytes the codes of a font.
// @param file of the outlines, kept as long as the font; null if there are none.
std::shared_ptr<const Font> WithGlyphs(Glyphs glyphs, const std::shared_ptr<FontFile>& file, Font font) {
    glyphs[' '].isSpace = true;
    font.next = [glyphs, file](const std::string& text, std::size_t& position) {
        return glyphs[static_cast<unsigned char>(text[position++])];
    };
    return std::make_shared<Font>(font);
}

// A Type 1, TrueType or CFF font.
// @param isReplacement whether glyphs have to be made as wide as the dictionary says.
std::shared_ptr<const Font> MakeSimpleFont(QPDFObjectHandle dictionary, const std::shared_ptr<FontFile>& file,
                                           bool isReplacement) {
    const int flags = ToInteger(Entry(Entry(dictionary, "/FontDescriptor"), "/Flags"), 0);
    const bool isTrueType = !isReplacement && ToName(Entry(dictionary, "/Subtype")) == "/TrueType";
    const bool isSymbolic = (flags & kSymbolicFlag) != 0;
    const Encoding characters = ToEncoding(Entry(dictionary, "/Encoding"), isTrueType && !isSymbolic);
    const std::array<double, 256> widths = WidthsOf(dictionary);
    Glyphs glyphs;
    for (unsigned int code = 0; code < glyphs.size(); ++code) {
        const auto& [name, unicode] = characters[code];
        unsigned int number = isTrueType && isSymbolic ? file->GlyphOfCode(code) : 0;
        if (number == 0) number = file->GlyphOfName(name);
        if (number == 0) number = file->GlyphOfUnicode(unicode);
        if (number == 0 && (isTrueType || name.empty())) number = file->GlyphOfCode(code);
        const double own = file->Advance(number);
        const double advance = widths[code] >= 0 ? widths[code] / kThousandths : own;
        glyphs[code].outline = &file->Outline(number);
        glyphs[code].advance = {advance, 0};
        if (isReplacement && own > 0 && advance > 0) glyphs[code].stretch = advance / own;
    }
    return WithGlyphs(glyphs, file, {});
}

// A font whose glyphs are page content.
std::shared_ptr<const Font> MakeType3Font(QPDFObjectHandle dictionary) {
    const Font font{.toEms = ToMatrix(Entry(dictionary, "/FontMatrix")), .resources = Entry(dictionary, "/Resources")};
    const Encoding characters = ToEncoding(Entry(dictionary, "/Encoding"), false);
    const std::array<double, 256> widths = WidthsOf(dictionary);
    Glyphs glyphs;
    for (std::size_t code = 0; code < glyphs.size(); ++code) {
        glyphs[code].content = Entry(Entry(dictionary, "/CharProcs"), "/" + characters[code].name);
        glyphs[code].advance = {std::max(widths[code], 0.0) * font.toEms.a, 0};
    }
    return WithGlyphs(glyphs, nullptr, font);
}

std::shared_ptr<const Font> MakeFont(QPDFObjectHandle dictionary, Notes& notes) {
    const std::string kind = ToName(Entry(dictionary, "/Subtype"));
    if (kind == "/Type0") return MakeCompositeFont(dictionary, notes);
    if (kind == "/Type3") return MakeType3Font(dictionary);
    std::shared_ptr<FontFile> file = OpenEmbedded(dictionary, notes);
    const bool isReplacement = !file;
    if (isReplacement) file = OpenReplacement(dictionary, notes);
    return file ? MakeSimpleFont(dictionary, file, isReplacement) : nullptr;
}

}  // namespace

std::shared_ptr<const Font> FontCache::Get(QPDFObjectHandle dictionary, Notes& notes) {
    const auto [entry, isNew] = fonts_.try_emplace(dictionary.unparse());
    if (isNew) entry->second = MakeFont(dictionary, notes);
    return entry->second;
}

}  // namespace pdf
