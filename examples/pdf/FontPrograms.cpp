#include <algorithm>
#include <cctype>

#include "Fonts.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr int kFixedPitchFlag = 1;
constexpr int kSerifFlag = 2;
constexpr int kItalicFlag = 64;
constexpr int kBoldFlag = 1 << 18;

const std::string kFolder = "/usr/share/fonts/type1/urw-base35/";

QPDFObjectHandle ProgramOf(QPDFObjectHandle font) {
    const QPDFObjectHandle descriptor = Entry(font, "/FontDescriptor");
    for (const char* key : {"/FontFile", "/FontFile2", "/FontFile3"}) {
        const QPDFObjectHandle program = Entry(descriptor, key);
        if (QPDFObjectHandle(program).isStream()) return program;
    }
    return QPDFObjectHandle::newNull();
}

bool Has(const std::string& name, std::initializer_list<const char*> parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&](const char* part) { return name.find(part) != std::string::npos; });
}

// The file of a font of the system that has the widths of a standard font, or that looks alike.
std::string SubstituteFor(const std::string& fontName, int flags) {
    std::string name = fontName;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (Has(name, {"dingbat"})) return "D050000L.t1";
    if (Has(name, {"symbol"})) return "StandardSymbolsPS.t1";
    const bool bold = Has(name, {"bold", "black", "heavy"}) || (flags & kBoldFlag) != 0;
    const bool italic = Has(name, {"italic", "oblique"}) || (flags & kItalicFlag) != 0;
    if (Has(name, {"courier", "mono", "consol"}) || (flags & kFixedPitchFlag) != 0)
        return std::string("NimbusMonoPS-") +
               (bold     ? italic ? "BoldItalic" : "Bold"
                : italic ? "Italic"
                         : "Regular") +
               ".t1";
    const bool sans = Has(name, {"helvetica", "arial", "sans"});
    const bool serif = Has(name, {"times", "roman", "serif", "georgia", "garamond"}) || (flags & kSerifFlag) != 0;
    if (!sans && serif)
        return std::string("NimbusRoman-") +
               (bold     ? italic ? "BoldItalic" : "Bold"
                : italic ? "Italic"
                         : "Regular") +
               ".t1";
    return std::string("NimbusSans-") + (bold ? italic ? "BoldItalic" : "Bold" : italic ? "Italic" : "Regular") + ".t1";
}

}  // namespace

bool IsEmbedded(QPDFObjectHandle font) {
    return ProgramOf(font).isStream();
}

std::unique_ptr<FontFile> OpenFontFile(QPDFObjectHandle font, const std::shared_ptr<FT_LibraryRec_>& library,
                                       Notes& notes) {
    std::string name = ToName(Entry(font, "/BaseFont"));
    if (!name.empty()) name.erase(0, 1);
    if (IsEmbedded(font)) {
        if (auto file = FontFile::FromBytes(library, ToBytes(ProgramOf(font)))) return file;
        notes.Add("the program of font " + name + " cannot be read");
    }
    const std::string substitute = SubstituteFor(name, ToInteger(Entry(Entry(font, "/FontDescriptor"), "/Flags"), 0));
    auto file = FontFile::FromPath(library, kFolder + substitute);
    notes.Add("font " + name + (file ? " is replaced by " + substitute : " is not there: its text is left out"));
    return file;
}

}  // namespace pdf
