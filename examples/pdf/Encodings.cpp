#include "Encodings.h"

#include <map>
#include <qpdf/QUtil.hh>
#include <sstream>

#include "Objects.h"

namespace pdf {

namespace {

// The characters from 20 to 7E and from A0 to FF in turn.
constexpr const char* kAsciiNames =
    "space exclam quotedbl numbersign dollar percent ampersand quotesingle parenleft parenright asterisk plus comma "
    "hyphen period slash zero one two three four five six seven eight nine colon semicolon less equal greater question "
    "at A B C D E F G H I J K L M N O P Q R S T U V W X Y Z bracketleft backslash bracketright asciicircum underscore "
    "grave a b c d e f g h i j k l m n o p q r s t u v w x y z braceleft bar braceright asciitilde";
constexpr const char* kLatinNames =
    "nbspace exclamdown cent sterling currency yen brokenbar section dieresis copyright ordfeminine guillemotleft "
    "logicalnot sfthyphen registered macron degree plusminus twosuperior threesuperior acute mu paragraph "
    "periodcentered cedilla onesuperior ordmasculine guillemotright onequarter onehalf threequarters questiondown "
    "Agrave Aacute Acircumflex Atilde Adieresis Aring AE Ccedilla Egrave Eacute Ecircumflex Edieresis Igrave Iacute "
    "Icircumflex Idieresis Eth Ntilde Ograve Oacute Ocircumflex Otilde Odieresis multiply Oslash Ugrave Uacute "
    "Ucircumflex Udieresis Yacute Thorn germandbls agrave aacute acircumflex atilde adieresis aring ae ccedilla egrave "
    "eacute ecircumflex edieresis igrave iacute icircumflex idieresis eth ntilde ograve oacute ocircumflex otilde "
    "odieresis divide oslash ugrave uacute ucircumflex udieresis yacute thorn ydieresis";
// Others, each with its character.
constexpr const char* kOtherNames =
    "dotlessi 131 Lslash 141 lslash 142 OE 152 oe 153 Scaron 160 scaron 161 Ydieresis 178 Zcaron 17D zcaron 17E florin "
    "192 circumflex 2C6 caron 2C7 breve 2D8 dotaccent 2D9 ring 2DA ogonek 2DB tilde 2DC hungarumlaut 2DD endash 2013 "
    "emdash 2014 quoteleft 2018 quoteright 2019 quotesinglbase 201A quotedblleft 201C quotedblright 201D quotedblbase "
    "201E dagger 2020 daggerdbl 2021 bullet 2022 ellipsis 2026 perthousand 2030 guilsinglleft 2039 guilsinglright 203A "
    "fraction 2044 Euro 20AC trademark 2122 minus 2212 fi FB01 fl FB02 Omega 3A9 pi 3C0 partialdiff 2202 Delta 2206 "
    "product 220F summation 2211 radical 221A infinity 221E integral 222B approxequal 2248 notequal 2260 lessequal "
    "2264 greaterequal 2265 lozenge 25CA";
// The standard encoding where it is not ASCII: code and name.
constexpr const char* kStandardCodes =
    "27 quoteright 60 quoteleft A1 exclamdown A2 cent A3 sterling A4 fraction A5 yen A6 florin A7 section A8 currency "
    "A9 quotesingle AA quotedblleft AB guillemotleft AC guilsinglleft AD guilsinglright AE fi AF fl B1 endash B2 "
    "dagger B3 daggerdbl B4 periodcentered B6 paragraph B7 bullet B8 quotesinglbase B9 quotedblbase BA quotedblright "
    "BB guillemotright BC ellipsis BD perthousand BF questiondown C1 grave C2 acute C3 circumflex C4 tilde C5 macron "
    "C6 breve C7 dotaccent C8 dieresis CA ring CB cedilla CD hungarumlaut CE ogonek CF caron D0 emdash E1 AE E3 "
    "ordfeminine E8 Lslash E9 Oslash EA OE EB ordmasculine F1 ae F5 dotlessi F8 lslash F9 oslash FA oe FB germandbls";

std::map<std::string, unsigned int> MakeNames() {
    std::map<std::string, unsigned int> names;
    std::string name;
    unsigned int unicode = 0x20;
    for (std::istringstream ascii(kAsciiNames); ascii >> name;) names[name] = unicode++;
    unicode = 0xA0;
    for (std::istringstream latin(kLatinNames); latin >> name;) names[name] = unicode++;
    for (std::istringstream others(kOtherNames); others >> name >> std::hex >> unicode;) names[name] = unicode;
    return names;
}

void SetAll(Encoding& encoding, std::string (*toUtf8)(const std::string&)) {
    for (unsigned int code = 0x20; code < encoding.size(); ++code) {
        std::size_t position = 0;
        bool isWrong = false;
        const std::string utf8 = toUtf8(std::string(1, static_cast<char>(code)));
        encoding[code].unicode = static_cast<unsigned int>(QUtil::get_next_utf8_codepoint(utf8, position, isWrong));
    }
}

void SetStandard(Encoding& encoding) {
    for (unsigned int code = 0x20; code < 0x7F; ++code) encoding[code].unicode = code;
    unsigned int code = 0;
    std::string name;
    for (std::istringstream codes(kStandardCodes); codes >> std::hex >> code >> name;)
        encoding[code].unicode = UnicodeOf(name);
}

}  // namespace

unsigned int UnicodeOf(const std::string& glyphName) {
    static const std::map<std::string, unsigned int> names = MakeNames();
    const std::string stem = glyphName.substr(0, glyphName.find('.'));  // "a.alt" is a kind of "a"
    const auto found = names.find(stem);
    if (found != names.end()) return found->second;
    const std::size_t digits = stem.rfind("uni", 0) == 0 ? 3 : stem.rfind('u', 0) == 0 ? 1 : std::string::npos;
    if (digits == std::string::npos || stem.size() < digits + 4) return 0;
    unsigned int unicode = 0;
    std::istringstream number(stem.substr(digits, digits == 3 ? 4 : 6));
    return number >> std::hex >> unicode && number.eof() ? unicode : 0;
}

Encoding ToEncoding(QPDFObjectHandle encoding, bool standard) {
    Encoding out;
    const std::string base = ToName(encoding.isName() ? encoding : Entry(encoding, "/BaseEncoding"));
    if (base == "/WinAnsiEncoding")
        SetAll(out, QUtil::win_ansi_to_utf8);
    else if (base == "/MacRomanEncoding")
        SetAll(out, QUtil::mac_roman_to_utf8);
    else if (base == "/StandardEncoding" || standard)
        SetStandard(out);
    int code = 0;
    for (const QPDFObjectHandle& item : Items(Entry(encoding, "/Differences"))) {
        const std::string name = ToName(item);
        if (name.empty()) {
            code = ToInteger(item, 0);
        } else if (code >= 0 && code < 256) {
            out[static_cast<std::size_t>(code)] = {name.substr(1), UnicodeOf(name.substr(1))};
            ++code;
        }
    }
    return out;
}

}  // namespace pdf
