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

}  // namespace

// The operands of a section are rows of a first code, a last one, and an identifier.
void CMap::AddSpans(std::vector<Span>& spans, const std::vector<QPDFObjectHandle>& operands, bool hasLast,
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

std::optional<CMap> CMap::Parse(QPDFObjectHandle encoding, Notes& notes) {
    CMap map;
    const std::string name = ToName(encoding.isStream() ? Entry(encoding, "/CMapName") : encoding);
    map.isVertical_ = ToInteger(Entry(encoding, "/WMode"), 0) == 1 || name.ends_with("-V");
    if (encoding.isStream()) {
        Budget budget;
        ReadContent(encoding, budget, [&](const std::string& name, const Operands& operands) {
            if (name == "endcodespacerange") AddSpans(map.codeSpaces_, operands, true, false);
            if (name == "endcidrange") AddSpans(map.cids_, operands, true, true);
            if (name == "endcidchar") AddSpans(map.cids_, operands, false, true);
        });
    }
    if (map.codeSpaces_.empty()) map.codeSpaces_.push_back({2, 0, 0xFFFF, 0});
    map.isIdentity_ = map.cids_.empty();
    if (encoding.isStream() || name == "/Identity-H" || name == "/Identity-V") return map;
    notes.Add("the predefined encoding " + name + " is not known: its text is left out");
    return std::nullopt;
}

CMap::Code CMap::Next(const std::string& text, std::size_t position) const {
    Code code;
    const auto read = [&](std::size_t length) {
        code.length = std::min(length, text.size() - position);
        code.value = ValueOf(text.substr(position, code.length));
    };
    bool isFound = false;
    for (std::size_t length = 1; length <= kLongestCode && !isFound; ++length) {
        read(length);
        isFound = std::any_of(codeSpaces_.begin(), codeSpaces_.end(), [&](const Span& s) {
            return s.length == code.length && IsEachByteBetween(s.first, code.value, s.last);
        });
    }
    if (!isFound) read(codeSpaces_.front().length);
    if (isIdentity_) code.cid = code.value;
    for (const Span& s : cids_) {
        if (s.length == code.length && s.first <= code.value && code.value <= s.last)
            code.cid = s.cid + (code.value - s.first);
    }
    return code;
}

}  // namespace pdf
