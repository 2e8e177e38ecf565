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
bool UsesBlendModes(QPDFObjectHandle form, std::set<QPDFObjGen>& seen, int depth) {
    if (form.isIndirect() && !seen.insert(form.getObjGen()).second) return false;
    if (depth == 0) return true;
    const QPDFObjectHandle resources = Entry(form, "/Resources");
    const std::string kind = ToName(Entry(form, "/Subtype"));
    // Without resources of its own it uses those of whoever shows it.
    if (!QPDFObjectHandle(resources).isDictionary() && (kind == "/Form" || kind == "/Type3")) return true;
    Notes unused;
    for (const auto& [name, state] : EntriesOf(resources, "/ExtGState")) {
        if (ToBlendMode(Entry(state, "/BM"), unused) != BlendMode::Normal) return true;
    }
    for (const char* category : {"/XObject", "/Pattern", "/Font"}) {
        for (const auto& [name, inner] : EntriesOf(resources, category)) {
            if (UsesBlendModes(inner, seen, depth - 1)) return true;
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

bool BlendModeUse::IsIn(QPDFObjectHandle form) {
    const auto [entry, isNew] = known_.try_emplace(form.getObjGen());
    if (isNew || !form.isIndirect()) {
        std::set<QPDFObjGen> seen;
        entry->second = UsesBlendModes(form, seen, kDeepestResources);
    }
    return entry->second;
}

}  // namespace pdf
