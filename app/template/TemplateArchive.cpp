#include "app/template/TemplateArchive.h"

#include <set>

#include "platform/base/Error.h"

namespace multiscene {

namespace {

constexpr const char* kResourceForks = "__MACOSX";

/// What lies at the top of an archive.
struct Top {
    std::set<std::string> folders, files;
    std::string templateName;  ///< of the folder NAME with a NAME.plist; empty: none
};

Top topOf(const platform::ZipArchive& archive) {
    Top top;
    for (const platform::ZipEntry& entry : archive.entries()) {
        const std::string first = entry.name.substr(0, entry.name.find('/'));
        if (first == kResourceForks) continue;
        (first.size() < entry.name.size() ? top.folders : top.files).insert(first);
        if (entry.name == first + "/" + first + ".plist") top.templateName = first;
    }
    return top;
}

}  // namespace

std::string onlyFolderOf(const platform::ZipArchive& archive, const std::string& file) {
    const Top top = topOf(archive);
    if (top.folders.empty()) return {};
    const std::string folder = top.templateName.empty() ? *top.folders.begin() : top.templateName;
    std::set<std::string> others = top.files;
    others.insert(top.folders.begin(), top.folders.end());
    others.erase(folder);
    if (others.empty()) return folder;
    throw platform::Error(platform::ErrorKind::Template,
                          "holds \"" + *others.begin() + "\" beside the folder \"" + folder +
                              "\"; a template's archive holds its folder and nothing else",
                          file);
}

}  // namespace multiscene
