#include "Transparency.h"

#include <map>
#include <optional>
#include <set>
#include <string>

#include "Objects.h"

namespace pdf {

namespace {

using vantu::BlendMode;

constexpr int kDeepestResources = 64;

std::optional<BlendMode> Find(const std::string& name) {
    if (name == "/Compatible") return BlendMode::Normal;
    for (unsigned int mode = 0; mode < vantu::kBlendModeCount; ++mode) {
        if (name == std::string("/") + vantu::kBlendModeNames[mode]) return BlendMode{mode};
    }
    return std::nullopt;
}

// The entries of a category of resources.
std::map<std::string, QPDFObjectHandle> EntriesOf(QPDFObjectHandle resources, const char* category) {
    QPDFObjectHandle entries = Entry(resources, category);
    return entries.isDictionary() ? entries.getDictAsMap() : std::map<std::string, QPDFObjectHandle>();
}

// @param seen the objects that have been looked through. @param depth how much deeper to look.
BlendModes ModesOf(QPDFObjectHandle form, std::set<QPDFObjGen>& seen, int depth) {
    BlendModes modes;
    if (form.isIndirect() && !seen.insert(form.getObjGen()).second) return modes;
    if (depth == 0) return modes.set();
    const QPDFObjectHandle resources = Entry(form, "/Resources");
    const std::string kind = ToName(Entry(form, "/Subtype"));
    // Without resources of its own it uses those of whoever shows it.
    if (!QPDFObjectHandle(resources).isDictionary() && (kind == "/Form" || kind == "/Type3")) return modes.set();
    Notes unused;
    for (const auto& [name, state] : EntriesOf(resources, "/ExtGState"))
        modes.set(static_cast<std::size_t>(ToBlendMode(Entry(state, "/BM"), unused)));
    for (const char* category : {"/XObject", "/Pattern", "/Font"}) {
        for (const auto& [name, inner] : EntriesOf(resources, category)) modes |= ModesOf(inner, seen, depth - 1);
    }
    return modes;
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

BlendModes BlendModeUse::In(QPDFObjectHandle form) {
    const auto [entry, isNew] = known_.try_emplace(form.getObjGen());
    if (isNew || !form.isIndirect()) {
        std::set<QPDFObjGen> seen;
        entry->second = ModesOf(form, seen, kDeepestResources).reset(static_cast<std::size_t>(BlendMode::Normal));
    }
    return entry->second;
}

}  // namespace pdf
