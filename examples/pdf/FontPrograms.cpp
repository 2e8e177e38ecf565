#include <algorithm>
#include <cctype>
#include <fstream>

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
    for (const char* key : {"/FontFile", "/FontFile2", "/FontFile3"})
        if (QPDFObjectHandle program = Entry(descriptor, key); program.isStream()) return program;
    return QPDFObjectHandle::newNull();
}

// The file of a font of the system that has the widths of a standard font, or that looks alike.
std::string SubstituteFor(std::string name, int flags) {
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto has = [&name](std::initializer_list<const char*> parts) {
        return std::ranges::any_of(parts, [&](const char* part) { return name.find(part) != std::string::npos; });
    };
    if (has({"dingbat"})) return "D050000L.t1";
    if (has({"symbol"})) return "StandardSymbolsPS.t1";
    const bool isSans = has({"helvetica", "arial", "sans"});
    const bool isSerif = has({"times", "roman", "serif", "georgia", "garamond"}) || (flags & kSerifFlag) != 0;
    const bool isFixed = has({"courier", "mono", "consol"}) || (flags & kFixedPitchFlag) != 0;
    const bool isBold = has({"bold", "black", "heavy"}) || (flags & kBoldFlag) != 0;
    const bool isItalic = has({"italic", "oblique"}) || (flags & kItalicFlag) != 0;
    const std::string family = isFixed ? "NimbusMonoPS-" : isSerif && !isSans ? "NimbusRoman-" : "NimbusSans-";
    const std::string style = std::string(isBold ? "Bold" : "") + (isItalic ? "Italic" : "");
    return family + (style.empty() ? "Regular" : style) + ".t1";
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

bool IsEmbedded(QPDFObjectHandle font) {
    return ProgramOf(font).isStream();
}

std::unique_ptr<FontFile> OpenFontFile(QPDFObjectHandle font, const FontLibrary& library, Notes& notes) {
    std::string name = ToName(Entry(font, "/BaseFont"));
    if (!name.empty()) name.erase(0, 1);
    if (IsEmbedded(font)) {
        if (auto file = FontFile::Open(library, ToBytes(ProgramOf(font)))) return file;
        notes.Add("the program of font " + name + " cannot be read");
    }
    const std::string substitute = SubstituteFor(name, ToInteger(Entry(Entry(font, "/FontDescriptor"), "/Flags"), 0));
    auto file = FontFile::Open(library, ReadFile(kFolder + substitute));
    notes.Add("font " + name + (file ? " is replaced by " + substitute : " is not there: its text is left out"));
    return file;
}

}  // namespace pdf
