#include "Transparency.h"

#include <map>
#include <optional>
#include <set>
#include <string>

#include "Objects.h"

namespace pdf {

namespace {

using vantu::BlendMode;

std::optional<BlendMode> Find(const std::string& name) {
    static const std::map<std::string, BlendMode> modes{
        {"/Normal", BlendMode::Normal},       {"/Compatible", BlendMode::Normal},
        {"/Multiply", BlendMode::Multiply},   {"/Screen", BlendMode::Screen},
        {"/Overlay", BlendMode::Overlay},     {"/Darken", BlendMode::Darken},
        {"/Lighten", BlendMode::Lighten},     {"/ColorDodge", BlendMode::ColorDodge},
        {"/ColorBurn", BlendMode::ColorBurn}, {"/HardLight", BlendMode::HardLight},
        {"/SoftLight", BlendMode::SoftLight}, {"/Difference", BlendMode::Difference},
        {"/Exclusion", BlendMode::Exclusion}};
    const auto found = modes.find(name);
    return found == modes.end() ? std::nullopt : std::optional(found->second);
}

// The entries of a category of resources.
std::map<std::string, QPDFObjectHandle> EntriesOf(QPDFObjectHandle resources, const char* category) {
    QPDFObjectHandle entries = Entry(resources, category);
    return entries.isDictionary() ? entries.getDictAsMap() : std::map<std::string, QPDFObjectHandle>();
}

bool UsesBlendModes(QPDFObjectHandle form, std::set<QPDFObjGen>& seen) {
    if (form.isIndirect() && !seen.insert(form.getObjGen()).second) return false;
    const QPDFObjectHandle resources = Entry(form, "/Resources");
    Notes unused;
    for (const auto& [name, state] : EntriesOf(resources, "/ExtGState")) {
        if (ToBlendMode(Entry(state, "/BM"), unused) != BlendMode::Normal) return true;
    }
    for (const char* category : {"/XObject", "/Pattern", "/Font"}) {
        for (const auto& [name, inner] : EntriesOf(resources, category)) {
            if (UsesBlendModes(inner, seen)) return true;
        }
    }
    return false;
}

}  // namespace

BlendMode ToBlendMode(QPDFObjectHandle value, Notes& notes) {
    std::string unknown;
    for (int i = 0; i < (value.isArray() ? value.getArrayNItems() : 1); ++i) {
        const std::string name = ToName(value.isArray() ? value.getArrayItem(i) : value);
        if (const auto mode = Find(name)) return *mode;
        if (unknown.empty()) unknown = name;
    }
    if (!unknown.empty()) notes.Add("blend mode " + unknown.substr(1) + " is painted as Normal");
    return BlendMode::Normal;
}

bool UsesBlendModes(QPDFObjectHandle form) {
    std::set<QPDFObjGen> seen;
    return UsesBlendModes(form, seen);
}

}  // namespace pdf
