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

std::string NameOf(QPDFObjectHandle font) {
    const std::string name = ToName(Entry(font, "/BaseFont"));
    return name.substr(std::min<std::size_t>(name.size(), 1));
}

// The file of a font of the system that has the widths of a standard font, or that looks alike.
std::string ReplacementFor(std::string name, int flags) {
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

std::unique_ptr<FontFile> OpenEmbedded(QPDFObjectHandle font, Notes& notes) {
    const QPDFObjectHandle descriptor = Entry(font, "/FontDescriptor");
    for (const char* key : {"/FontFile", "/FontFile2", "/FontFile3"}) {
        const QPDFObjectHandle program = Entry(descriptor, key);
        if (QPDFObjectHandle(program).isNull()) continue;
        if (auto file = FontFile::Open(ToBytes(program))) return file;
        notes.Add("the program of font " + NameOf(font) + " cannot be read");
    }
    return nullptr;
}

std::unique_ptr<FontFile> OpenReplacement(QPDFObjectHandle font, Notes& notes) {
    const std::string name = NameOf(font);
    const std::string other = ReplacementFor(name, ToInteger(Entry(Entry(font, "/FontDescriptor"), "/Flags"), 0));
    auto file = FontFile::Open(ReadFile(kFolder + other));
    notes.Add("font " + name + (file ? " is replaced by " + other : " is not there: its text is left out"));
    return file;
}

}  // namespace pdf
