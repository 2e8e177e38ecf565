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
    // @param isReplacement whether glyphs have to be made as wide as the dictionary says.
    SimpleFont(QPDFObjectHandle dictionary, std::unique_ptr<FontFile> file, bool isReplacement)
        : file_(std::move(file)) {
        const int flags = ToInteger(Entry(Entry(dictionary, "/FontDescriptor"), "/Flags"), 0);
        const bool isTrueType = !isReplacement && ToName(Entry(dictionary, "/Subtype")) == "/TrueType";
        const bool isSymbolic = (flags & kSymbolicFlag) != 0;
        const Encoding characters = ToEncoding(Entry(dictionary, "/Encoding"), isTrueType && !isSymbolic);
        const std::array<double, 256> widths = WidthsOf(dictionary);
        for (unsigned int code = 0; code < characters.size(); ++code) {
            const auto& [name, unicode] = characters[code];
            unsigned int glyph = isTrueType && isSymbolic ? file_->GlyphOfCode(code) : 0;
            if (glyph == 0) glyph = file_->GlyphOfName(name);
            if (glyph == 0) glyph = file_->GlyphOfUnicode(unicode);
            if (glyph == 0 && (isTrueType || name.empty())) glyph = file_->GlyphOfCode(code);
            const double own = file_->Advance(glyph);
            glyphs_[code] = glyph;
            advances_[code] = widths[code] >= 0 ? widths[code] / kThousandths : own;
            stretches_[code] = isReplacement && own > 0 && advances_[code] > 0 ? advances_[code] / own : 1;
        }
    }

    Glyph Next(const std::string& text, std::size_t& position) const override {
        const auto code = static_cast<unsigned char>(text[position++]);
        Glyph glyph;
        glyph.outline = &file_->Outline(glyphs_[code]);
        glyph.advance = {advances_[code], 0};
        glyph.stretch = stretches_[code];
        glyph.isSpace = code == ' ';
        return glyph;
    }

private:
    std::unique_ptr<FontFile> file_;
    std::array<unsigned int, 256> glyphs_{};
    std::array<double, 256> advances_{};
    std::array<double, 256> stretches_{};
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
    std::unique_ptr<FontFile> file = OpenEmbedded(dictionary, library, notes);
    const bool isReplacement = !file;
    if (isReplacement) file = OpenReplacement(dictionary, library, notes);
    return file ? std::make_shared<SimpleFont>(dictionary, std::move(file), isReplacement) : nullptr;
}

}  // namespace

std::shared_ptr<const Font> FontCache::Get(QPDFObjectHandle dictionary, Notes& notes) {
    const auto [entry, isNew] = fonts_.try_emplace(dictionary.unparse());
    if (isNew) entry->second = MakeFont(dictionary, library_, notes);
    return entry->second;
}

}  // namespace pdf
