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

// Type 1, TrueType and CFF fonts whose codes are single bytes.
class SimpleFont : public Font {
public:
    SimpleFont(QPDFObjectHandle dictionary, std::unique_ptr<FontFile> file) : file_(std::move(file)) {
        const int flags = ToInteger(Entry(Entry(dictionary, "/FontDescriptor"), "/Flags"), 0);
        const bool isTrueType = ToName(Entry(dictionary, "/Subtype")) == "/TrueType";
        const bool isSymbolic = (flags & kSymbolicFlag) != 0;
        const Encoding characters = ToEncoding(Entry(dictionary, "/Encoding"), isTrueType && !isSymbolic);
        const std::array<double, 256> widths = WidthsOf(dictionary);
        for (unsigned int code = 0; code < characters.size(); ++code) {
            if (isTrueType && isSymbolic) glyphs_[code] = file_->GlyphOfCode(code);
            if (glyphs_[code] == 0) glyphs_[code] = GlyphOf(code, characters[code]);
            advances_[code] = widths[code] >= 0 ? widths[code] / kThousandths : file_->Advance(glyphs_[code]);
        }
    }

    Glyph Next(const std::string& text, std::size_t& position) const override {
        const auto code = static_cast<unsigned char>(text[position++]);
        Glyph glyph;
        glyph.outline = &file_->Outline(glyphs_[code]);
        glyph.advance = {advances_[code], 0};
        glyph.isSpace = code == ' ';
        return glyph;
    }

private:
    [[nodiscard]] unsigned int GlyphOf(unsigned int code, const Character& character) const {
        if (const unsigned int glyph = file_->GlyphOfName(character.name)) return glyph;
        if (const unsigned int glyph = file_->GlyphOfUnicode(character.unicode)) return glyph;
        return character.name.empty() ? file_->GlyphOfCode(code) : 0;
    }

    std::unique_ptr<FontFile> file_;
    std::array<unsigned int, 256> glyphs_{};
    std::array<double, 256> advances_{};
};

// A font whose glyphs are page content.
class Type3Font : public Font {
public:
    explicit Type3Font(QPDFObjectHandle dictionary) : dictionary_(dictionary), widths_(WidthsOf(dictionary)) {
        const Encoding characters = ToEncoding(Entry(dictionary, "/Encoding"), false);
        for (std::size_t code = 0; code < characters.size(); ++code)
            contents_[code] = Entry(Entry(dictionary, "/CharProcs"), "/" + characters[code].name);
    }

    Glyph Next(const std::string& text, std::size_t& position) const override {
        const auto code = static_cast<unsigned char>(text[position++]);
        Glyph glyph;
        glyph.content = contents_[code];
        glyph.advance = {std::max(widths_[code], 0.0) * toEms_.a, 0};
        glyph.isSpace = code == ' ';
        return glyph;
    }

    [[nodiscard]] Matrix ToEms() const override { return toEms_; }
    [[nodiscard]] QPDFObjectHandle Resources() const override { return Entry(dictionary_, "/Resources"); }

private:
    QPDFObjectHandle dictionary_;
    Matrix toEms_ = ToMatrix(Entry(dictionary_, "/FontMatrix"));
    std::array<double, 256> widths_;
    std::array<QPDFObjectHandle, 256> contents_;
};

std::shared_ptr<const Font> MakeFont(QPDFObjectHandle dictionary, const FontLibrary& library, Notes& notes) {
    const std::string kind = ToName(Entry(dictionary, "/Subtype"));
    if (kind == "/Type0") return MakeCompositeFont(dictionary, library, notes);
    if (kind == "/Type3") return std::make_shared<Type3Font>(dictionary);
    std::unique_ptr<FontFile> file = OpenFontFile(dictionary, library, notes);
    return file ? std::make_shared<SimpleFont>(dictionary, std::move(file)) : nullptr;
}

}  // namespace

std::shared_ptr<const Font> FontCache::Get(QPDFObjectHandle dictionary, Notes& notes) {
    const auto [entry, isNew] = fonts_.try_emplace(dictionary.unparse());
    if (isNew) entry->second = MakeFont(dictionary, library_, notes);
    return entry->second;
}

}  // namespace pdf
