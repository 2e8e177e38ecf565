#include "CMap.h"

#include <algorithm>

#include "ContentReader.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr std::size_t kLongestCode = 4;

unsigned int ValueOf(const std::string& bytes) {
    unsigned int value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

bool IsEachByteBetween(unsigned int first, unsigned int value, unsigned int last) {
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        const unsigned int byte = value >> shift & 0xFF;
        if (byte < (first >> shift & 0xFF) || byte > (last >> shift & 0xFF)) return false;
    }
    return true;
}

// The operands of a section are rows of a first code, a last one, and an identifier.
void AddSpans(std::vector<CMap::Span>& spans, const std::vector<QPDFObjectHandle>& operands, bool hasLast,
              bool hasCid) {
    const std::size_t columns = 1U + (hasLast ? 1U : 0U) + (hasCid ? 1U : 0U);
    for (std::size_t i = 0; i + columns <= operands.size(); i += columns) {
        QPDFObjectHandle first = operands[i];
        QPDFObjectHandle last = operands[hasLast ? i + 1 : i];
        if (!first.isString() || !last.isString() || first.getStringValue().size() > kLongestCode) continue;
        const int cid = hasCid ? ToInteger(operands[i + columns - 1], 0) : 0;
        spans.push_back({first.getStringValue().size(), ValueOf(first.getStringValue()), ValueOf(last.getStringValue()),
                         static_cast<unsigned int>(std::max(cid, 0))});
    }
}

}  // namespace

std::optional<CMap> CMap::Parse(QPDFObjectHandle encoding, Notes& notes) {
    CMap map;
    const std::string name = ToName(encoding.isStream() ? Entry(encoding, "/CMapName") : encoding);
    map.isVertical = ToInteger(Entry(encoding, "/WMode"), 0) == 1 || name.ends_with("-V");
    if (encoding.isStream()) {
        Budget budget;
        ContentReader().Read(encoding, budget, [&](const std::string& name, const Operands& operands) {
            if (name == "endcodespacerange") AddSpans(map.codeSpaces, operands, true, false);
            if (name == "endcidrange") AddSpans(map.cids, operands, true, true);
            if (name == "endcidchar") AddSpans(map.cids, operands, false, true);
        });
    }
    if (map.codeSpaces.empty()) map.codeSpaces.push_back({2, 0, 0xFFFF, 0});
    if (encoding.isStream() || name == "/Identity-H" || name == "/Identity-V") return map;
    notes.Add("the predefined encoding " + name + " is not known: its text is left out");
    return std::nullopt;
}

CMap::Code CMap::Next(const std::string& text, std::size_t position) const {
    const auto read = [&](std::size_t length) {
        const std::string bytes = text.substr(position, length);
        return Code{ValueOf(bytes), bytes.size()};
    };
    const auto isInSpace = [&](const Code& code) {
        return std::ranges::any_of(codeSpaces, [&](const Span& s) {
            return s.length == code.length && IsEachByteBetween(s.first, code.value, s.last);
        });
    };
    Code code = read(codeSpaces.front().length);  // if none fits
    for (std::size_t length = kLongestCode; length > 0; --length)
        if (isInSpace(read(length))) code = read(length);  // the shortest that fits
    if (cids.empty()) code.cid = code.value;
    for (const Span& s : cids) {
        if (s.length == code.length && s.first <= code.value && code.value <= s.last)
            code.cid = s.cid + (code.value - s.first);
    }
    return code;
}

}  // namespace pdf
