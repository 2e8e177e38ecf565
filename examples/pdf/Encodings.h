#pragma once

#include <array>
#include <string>

#include "Qpdf.h"

namespace pdf {

// What a code of a simple font stands for: a glyph's name, where the font's encoding gives one by /Differences, and a
// character, 0 if it is not known.
struct Character {
    std::string name;
    unsigned int unicode = 0;
};

using Encoding = std::array<Character, 256>;

// The encoding of a simple font.
// @param encoding the entry Encoding: a name or a dictionary. @param standard whether a font that names none has the
//        standard encoding, and not one of its own.
Encoding ToEncoding(QPDFObjectHandle encoding, bool standard);

// The character that a glyph name of the Latin alphabets, or one with a number in it, stands for; 0 if it is another.
unsigned int UnicodeOf(const std::string& glyphName);

}  // namespace pdf
