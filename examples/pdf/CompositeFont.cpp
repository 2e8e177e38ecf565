#include "CMap.h"
#include "Fonts.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr double kThousandths = 1000;
constexpr int kMostCids = 0x10000;

// The widths of a descendant font, by character identifier: "first [w w w]" and "first last w" in turn.
std::map<unsigned int, double> CidWidths(QPDFObjectHandle array) {
    std::map<unsigned int, double> widths;
    const int count = array.isArray() ? array.getArrayNItems() : 0;
    int room = kMostCids;  // in all runs, which may overlap
    for (int i = 0; i + 1 < count && room > 0;) {
        const int first = std::clamp(ToInteger(Item(array, i), 0), 0, kMostCids);
        const QPDFObjectHandle second = Item(array, i + 1);
        if (QPDFObjectHandle(second).isArray()) {
            const std::vector<double> list = ToNumbers(second);
            auto cid = static_cast<unsigned int>(first);
            for (const double width : list) widths[cid++] = width;
            i += 2;
        } else {
            const int last = std::clamp(ToInteger(second, 0), 0, kMostCids);
            for (int cid = first; cid <= last && room > 0; ++cid, --room)
                widths[static_cast<unsigned int>(cid)] = ToNumber(Item(array, i + 2), 0);
            i += 3;
        }
    }
    return widths;
}

// A font whose codes, of one byte or more, name the glyphs of its descendant by character identifiers.
class CompositeFont : public Font {
public:
    CompositeFont(QPDFObjectHandle descendant, CMap map, std::unique_ptr<FontFile> file)
        : map_(std::move(map)),
          file_(std::move(file)),
          hasOwnNumbers_(ToName(Entry(descendant, "/Subtype")) == "/CIDFontType0"),
          glyphTable_(ToBytes(Entry(descendant, "/CIDToGIDMap"))),
          widths_(CidWidths(Entry(descendant, "/W"))),
          defaultWidth_(ToNumber(Entry(descendant, "/DW"), kThousandths)) {
        const std::vector<double> vertical = ToNumbers(Entry(descendant, "/DW2"));
        if (vertical.size() == 2) verticalOrigin_ = vertical[0], verticalAdvance_ = vertical[1];
    }

    Glyph Next(const std::string& text, std::size_t& position) const override {
        const CMap::Code code = map_.Next(text, position);
        position += code.length;
        const auto found = widths_.find(code.cid);
        const double width = (found == widths_.end() ? defaultWidth_ : found->second) / kThousandths;
        Glyph glyph;
        glyph.outline = &file_->Outline(GlyphOf(code.cid));
        glyph.advance = {width, 0};
        if (map_.IsVertical()) {
            glyph.advance = {0, verticalAdvance_ / kThousandths};
            glyph.origin = {-width / 2, -verticalOrigin_ / kThousandths};
        }
        glyph.isSpace = code.length == 1 && code.value == ' ';
        return glyph;
    }

    [[nodiscard]] bool IsVertical() const override { return map_.IsVertical(); }

private:
    [[nodiscard]] unsigned int GlyphOf(unsigned int cid) const {
        if (hasOwnNumbers_) return file_->GlyphOfCid(cid);
        if (glyphTable_.empty()) return cid;
        const std::size_t at = std::size_t{cid} * 2;
        if (at + 1 >= glyphTable_.size()) return 0;
        return static_cast<unsigned char>(glyphTable_[at]) * 256U + static_cast<unsigned char>(glyphTable_[at + 1]);
    }

    CMap map_;
    std::unique_ptr<FontFile> file_;
    bool hasOwnNumbers_;      // the glyphs know their identifiers
    std::string glyphTable_;  // two bytes a glyph, by identifier; empty if these are the glyphs' numbers
    std::map<unsigned int, double> widths_;
    double defaultWidth_;
    double verticalOrigin_ = 880;
    double verticalAdvance_ = -1000;
};

}  // namespace

std::shared_ptr<const Font> MakeCompositeFont(QPDFObjectHandle dictionary,
                                              const std::shared_ptr<FT_LibraryRec_>& library, Notes& notes) {
    const QPDFObjectHandle descendant = Item(Entry(dictionary, "/DescendantFonts"), 0);
    if (!IsEmbedded(descendant)) {
        notes.Add("a composite font that is not embedded is left out");
        return nullptr;
    }
    std::unique_ptr<FontFile> file = OpenFontFile(descendant, library, notes);
    if (!file) return nullptr;
    return std::make_shared<CompositeFont>(descendant, CMap::Parse(Entry(dictionary, "/Encoding"), notes),
                                           std::move(file));
}

}  // namespace pdf
