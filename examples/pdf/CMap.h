#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// How the strings of a composite font divide into codes, and which glyphs, told by character identifiers, they name.
struct CMap {
    struct Code {
        unsigned int value = 0;
        std::size_t length = 1;  // in bytes
        unsigned int cid = 0;
    };

    // Codes of one length, first and last included. Of a code space each byte lies between its own bounds.
    struct Span {
        std::size_t length;
        unsigned int first;
        unsigned int last;
        unsigned int cid;
    };

    // @param encoding a stream, or the name of a predefined one.
    // @return nothing, with a note, for a predefined one but the two identities.
    static std::optional<CMap> Parse(QPDFObjectHandle encoding, Notes& notes);

    // The code at a position of a text. REQUIRES: position < text.size().
    [[nodiscard]] Code Next(const std::string& text, std::size_t position) const;

    std::vector<Span> codeSpaces;
    std::vector<Span> cids;  // later ones overrule; if there are none, codes are identifiers
    bool isVertical = false;
};

}  // namespace pdf
