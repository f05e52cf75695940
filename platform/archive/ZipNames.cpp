#include "platform/archive/ZipNames.h"

#include <glib.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>

namespace platform {

namespace {

struct GFree {
    void operator()(gchar* text) const { g_free(text); }
};
using GText = std::unique_ptr<gchar, GFree>;

std::string folded(const std::string& name) {
    const GText composed(g_utf8_normalize(name.data(), static_cast<gssize>(name.size()), G_NORMALIZE_ALL));
    const GText lower(g_utf8_casefold(composed.get(), -1));
    // Folding can take composed letters apart again.
    const GText result(g_utf8_normalize(lower.get(), -1, G_NORMALIZE_ALL));
    return result.get();
}

bool isUtf8(const std::string& name) {
    return g_utf8_validate(name.data(), static_cast<gssize>(name.size()), nullptr);
}

bool hasControlCharacter(const std::string& name) {
    for (const char* at = name.data(); at < name.data() + name.size(); at = g_utf8_next_char(at))
        if (g_unichar_iscntrl(g_utf8_get_char(at))) return true;
    return false;
}

std::optional<std::string> faultOfComponents(std::string_view name, const ZipLimits& limits) {
    uint64_t depth = 0;
    while (!name.empty()) {
        const std::string_view component = name.substr(0, name.find('/'));
        if (component == "..") return "the name leaves the archive's folder";
        if (component.empty() || component == ".") return "the name has an empty component";
        if (component.size() > limits.maxComponentBytes)
            return "a component of the name is longer than " + std::to_string(limits.maxComponentBytes) +
                   " bytes";
        if (++depth > limits.maxDepth)
            return "the name is more than " + std::to_string(limits.maxDepth) + " folders deep";
        name.remove_prefix(std::min(name.size(), component.size() + 1));
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> faultOfZipName(const std::string& name, const ZipLimits& limits) {
    if (name.empty()) return "the name is empty";
    if (name.size() > limits.maxNameBytes)
        return "the name is longer than " + std::to_string(limits.maxNameBytes) + " bytes";
    if (std::any_of(name.begin(), name.end(), [](unsigned char letter) { return letter < 0x20; }))
        return "the name holds a control character";
    if (!isUtf8(name)) return "the name is not UTF-8";
    if (hasControlCharacter(name)) return "the name holds a control character";
    if (name.find('\\') != std::string::npos) return "the name holds a backslash";
    if (name.front() == '/') return "the name is absolute";
    if (name.size() >= 2 && std::isalpha(static_cast<unsigned char>(name[0])) && name[1] == ':')
        return "the name starts with a drive letter";
    return faultOfComponents(name, limits);
}

std::optional<std::string> ZipNameSet::faultOfAdding(const std::string& name) {
    for (size_t slash = name.find('/'); slash != std::string::npos && slash + 1 < name.size();
         slash = name.find('/', slash + 1))
        if (auto fault = add(name.substr(0, slash), true, false)) return fault;
    const bool folder = name.back() == '/';
    return add(folder ? name.substr(0, name.size() - 1) : name, folder, true);
}

std::optional<std::string> ZipNameSet::add(const std::string& path, bool folder, bool listed) {
    const auto [known, isNew] = byFoldedName_.try_emplace(folded(path), Known{path, folder, listed});
    if (isNew) return std::nullopt;
    Known& earlier = known->second;
    if (earlier.spelling != path)
        return "the name differs from \"" + printableName(earlier.spelling) + "\" in case or accents alone";
    if (earlier.folder != folder) return "the name is both a file and a folder";
    if (earlier.listed && listed) return "the name is in the archive twice";
    earlier.listed = earlier.listed || listed;
    return std::nullopt;
}

std::string printableName(const std::string& name) {
    const GText valid(g_utf8_make_valid(name.data(), static_cast<gssize>(name.size())));
    std::string result;
    for (const char* at = valid.get(); *at; at = g_utf8_next_char(at)) {
        if (g_unichar_iscntrl(g_utf8_get_char(at)))
            result += '?';
        else
            result.append(at, static_cast<const char*>(g_utf8_next_char(at)));
    }
    return result;
}

}  // namespace platform
