#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// How the strings of a composite font divide into codes, and which glyphs, told by character identifiers, they name.
class CMap {
public:
    struct Code {
        unsigned int value = 0;
        std::size_t length = 1;  // in bytes
        unsigned int cid = 0;
    };

    // @param encoding a stream, or the name of a predefined one.
    // @return nothing, with a note, for a predefined one but the two identities.
    static std::optional<CMap> Parse(QPDFObjectHandle encoding, Notes& notes);

    // The code at a position of a text. REQUIRES: position < text.size().
    [[nodiscard]] Code Next(const std::string& text, std::size_t position) const;

    [[nodiscard]] bool IsVertical() const { return isVertical_; }

private:
    // Codes of one length, first and last included. Of a code space each byte lies between its own bounds.
    struct Span {
        std::size_t length;
        unsigned int first;
        unsigned int last;
        unsigned int cid;
    };

    static void AddSpans(std::vector<Span>& spans, const std::vector<QPDFObjectHandle>& operands, bool hasLast,
                         bool hasCid);

    std::vector<Span> codeSpaces_;
    std::vector<Span> cids_;  // later ones overrule
    bool isIdentity_ = false;
    bool isVertical_ = false;
};

}  // namespace pdf
