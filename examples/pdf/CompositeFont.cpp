#include <array>

#include "CMap.h"
#include "Fonts.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr double kThousandths = 1000;
constexpr int kMostCids = 0x10000;

// Numbers of glyphs by character identifier, as W and W2 of a descendant font say them: "first [n ...]" and "first last
// n ..." in turn, `Count` numbers a glyph.
template <std::size_t Count>
using GlyphNumbers = std::map<int, std::array<double, Count>>;

template <std::size_t Count>
GlyphNumbers<Count> ReadGlyphNumbers(QPDFObjectHandle array) {
    GlyphNumbers<Count> numbers;
    const std::vector<QPDFObjectHandle> items = Items(array);
    const auto read = [](const std::vector<QPDFObjectHandle>& from, std::size_t at) {
        std::array<double, Count> some{};
        for (std::size_t j = 0; j < Count && at + j < from.size(); ++j) some[j] = ToNumber(from[at + j], 0);
        return some;
    };
    int room = kMostCids;  // in all runs, which may overlap
    for (std::size_t i = 0; i + 1 < items.size() && room > 0;) {
        int cid = std::clamp(ToInteger(items[i], 0), 0, kMostCids);
        const std::vector<QPDFObjectHandle> list = Items(items[i + 1]);
        const int last = std::clamp(ToInteger(items[i + 1], -1), -1, kMostCids);
        for (std::size_t j = 0; j + Count <= list.size(); j += Count) numbers[cid++] = read(list, j);
        for (; cid <= last && room > 0; ++cid, --room) numbers[cid] = read(items, i + 2);
        i += list.empty() && last >= 0 ? 2 + Count : 2;
    }
    return numbers;
}

// A font whose codes, of one byte or more, name the glyphs of its descendant by character identifiers.
class CompositeFont : public Font {
public:
    CompositeFont(QPDFObjectHandle descendant, CMap map, std::unique_ptr<FontFile> file)
        : map_(std::move(map)),
          file_(std::move(file)),
          hasOwnNumbers_(ToName(Entry(descendant, "/Subtype")) == "/CIDFontType0"),
          glyphTable_(ToBytes(Entry(descendant, "/CIDToGIDMap"))),
          widths_(ReadGlyphNumbers<1>(Entry(descendant, "/W"))),
          verticals_(ReadGlyphNumbers<3>(Entry(descendant, "/W2"))),
          defaultWidth_(ToNumber(Entry(descendant, "/DW"), kThousandths)),
          defaultTop_(ToNumber(Item(Entry(descendant, "/DW2"), 0), 880)),
          defaultDown_(ToNumber(Item(Entry(descendant, "/DW2"), 1), -kThousandths)) {}

    Glyph Next(const std::string& text, std::size_t& position) const override {
        const CMap::Code code = map_.Next(text, position);
        position += code.length;
        const int cid = static_cast<int>(code.cid);
        const auto width = widths_.find(cid);
        const double across = width == widths_.end() ? defaultWidth_ : width->second[0];
        Glyph glyph;
        glyph.outline = &file_->Outline(GlyphOf(code.cid));
        glyph.advance = {across / kThousandths, 0};
        if (IsVertical()) {
            const auto vertical = verticals_.find(cid);
            const auto [down, x, y] =
                vertical == verticals_.end() ? std::array{defaultDown_, across / 2, defaultTop_} : vertical->second;
            glyph.advance = {0, down / kThousandths};
            glyph.origin = {-x / kThousandths, -y / kThousandths};
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
    bool hasOwnNumbers_;         // the glyphs know their identifiers
    std::string glyphTable_;     // two bytes a glyph, by identifier; empty if these are the glyphs' numbers
    GlyphNumbers<1> widths_;     // in thousandths, as all that follow
    GlyphNumbers<3> verticals_;  // the way down; the origin of vertical writing, seen from the other one
    double defaultWidth_;
    double defaultTop_;
    double defaultDown_;
};

}  // namespace

std::shared_ptr<const Font> MakeCompositeFont(QPDFObjectHandle dictionary, const FontLibrary& library, Notes& notes) {
    const QPDFObjectHandle descendant = Item(Entry(dictionary, "/DescendantFonts"), 0);
    std::unique_ptr<FontFile> file = OpenEmbedded(descendant, library, notes);
    const std::optional<CMap> map = CMap::Parse(Entry(dictionary, "/Encoding"), notes);
    if (!file) notes.Add("a composite font without a program that can be read is left out");
    return file && map ? std::make_shared<CompositeFont>(descendant, *map, std::move(file)) : nullptr;
}

}  // namespace pdf
