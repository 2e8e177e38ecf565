#include <array>

#include "CMap.h"
#include "Fonts.h"
#include "Objects.h"
#include "Samples.h"

namespace pdf {

namespace {

constexpr double kThousandths = 1000;
constexpr int kMostCids = 0x10000;
constexpr unsigned int kBitsOfGlyph = 16;  // in a table from identifiers to glyphs

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

}  // namespace

std::shared_ptr<const Font> MakeCompositeFont(QPDFObjectHandle dictionary, Notes& notes) {
    const QPDFObjectHandle descendant = Item(Entry(dictionary, "/DescendantFonts"), 0);
    const std::shared_ptr<FontFile> file = OpenEmbedded(descendant, notes);
    const std::optional<CMap> map = CMap::Parse(Entry(dictionary, "/Encoding"), notes);
    if (!file) notes.Add("a composite font without a program that can be read is left out");
    if (!file || !map) return nullptr;

    const bool knowsCids = ToName(Entry(descendant, "/Subtype")) == "/CIDFontType0";
    const auto glyphOf = [=, table = ToBytes(Entry(descendant, "/CIDToGIDMap"))](unsigned int cid) -> unsigned int {
        if (knowsCids) return file->GlyphOfCid(cid);
        if (table.empty()) return cid;
        return BitsAt(table, std::size_t{cid} * kBitsOfGlyph, kBitsOfGlyph);
    };
    // In thousandths, as are DW and DW2.
    const auto widths = ReadGlyphNumbers<1>(Entry(descendant, "/W"));
    // How far a glyph goes down; the origin of vertical writing, seen from the other one.
    const auto verticals = ReadGlyphNumbers<3>(Entry(descendant, "/W2"));
    const double defaultWidth = ToNumber(Entry(descendant, "/DW"), kThousandths);
    const double defaultTop = ToNumber(Item(Entry(descendant, "/DW2"), 0), 880);
    const double defaultDown = ToNumber(Item(Entry(descendant, "/DW2"), 1), -kThousandths);
    const auto next = [=](const std::string& text, std::size_t& position) {
        const CMap::Code code = map->Next(text, position);
        position += code.length;
        const int cid = static_cast<int>(code.cid);
        const auto width = widths.find(cid);
        const double across = width == widths.end() ? defaultWidth : width->second[0];
        Glyph glyph{.outline = &file->Outline(glyphOf(code.cid)), .advance = {across / kThousandths, 0}};
        if (map->isVertical) {
            const auto vertical = verticals.find(cid);
            const auto [down, x, y] =
                vertical == verticals.end() ? std::array{defaultDown, across / 2, defaultTop} : vertical->second;
            glyph.advance = {0, down / kThousandths};
            glyph.origin = {-x / kThousandths, -y / kThousandths};
        }
        glyph.isSpace = code.length == 1 && code.value == ' ';
        return glyph;
    };
    return std::make_shared<Font>(Font{next, map->isVertical});
}

}  // namespace pdf
