#include "app/author/NewTemplate.h"

#include <stdio.h>

#include <cerrno>
#include <string_view>

#include "app/template/TemplateFolder.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/PartFile.h"
#include "platform/base/PartFolder.h"
#include "platform/base/Paths.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
namespace fs = std::filesystem;

namespace {

// The pattern is one of the sample templates, so it is played and checked like them.
constexpr const char* kPatternFolder = "templates/minimal";
constexpr const char* kPatternName = "minimal";
constexpr const char* kPatternNumber = "<integer>1000</integer>";
constexpr const char* kPatternTitles[] = {"<string>Minimal</string>", "<string>极简</string>",
                                          "<string>ミニマル</string>"};
constexpr uint64_t kMaxFileBytes = 16u << 20;
constexpr int64_t kFirstNumber = 100'000, kNumberRange = 900'000'000;

std::string xmlText(const std::string& text) {
    std::string result;
    for (const char letter : text) {
        switch (letter) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += letter;
        }
    }
    return result;
}

void replaceAll(std::string& text, std::string_view from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

std::string adapted(std::string text, const std::string& name, int64_t sId) {
    replaceAll(text, std::string(kPatternName) + ".plist", "NAME.plist");  // only comments say it
    for (const char* title : kPatternTitles)
        replaceAll(text, title, "<string>" + xmlText(name) + "</string>");
    replaceAll(text, std::string("/") + kPatternName + "/", "/" + xmlText(name) + "/");
    replaceAll(text, kPatternNumber, "<integer>" + std::to_string(sId) + "</integer>");
    return text;
}

void copyAdapted(const fs::path& from, const fs::path& to, const std::string& name, int64_t sId) {
    const auto bytes = platform::readFile(from, kMaxFileBytes);
    std::string content(bytes.begin(), bytes.end());
    if (from.extension() == ".plist") content = adapted(std::move(content), name, sId);
    platform::createFolders(to.parent_path());
    platform::writeFileAtomically(to, content);
}

void copyPattern(const fs::path& folder, const std::string& name, int64_t sId) {
    const fs::path pattern = platform::resourcesFolder() / kPatternFolder;
    const auto followLinks = fs::directory_options::follow_directory_symlink;
    for (const auto& entry : fs::recursive_directory_iterator(pattern / "", followLinks)) {
        if (!entry.is_regular_file()) continue;
        fs::path relative = entry.path().lexically_relative(pattern);
        if (relative == std::string(kPatternName) + ".plist") relative = name + ".plist";
        copyAdapted(entry.path(), folder / relative, name, sId);
    }
}

}  // namespace

fs::path makeNewTemplate(const fs::path& parent, const std::string& name, int64_t sId) {
    if (!isTemplateName(name)) throw Error(ErrorKind::Usage, "is no name that a template can have", name);
    const fs::path folder = fs::absolute(parent) / name;
    if (fs::exists(fs::symlink_status(folder)))
        throw Error(ErrorKind::Usage, "exists already", folder.string());
    platform::createFolders(folder.parent_path());
    platform::removeAbandonedParts(folder.parent_path());
    const platform::PartFolder making(folder.parent_path(), name);
    copyPattern(making.path() / name, name, sId);
    // Another program may have made one of this name meanwhile.
    if (::rename((making.path() / name).c_str(), folder.c_str()) != 0) {
        if (errno == ENOTEMPTY || errno == EEXIST || errno == ENOTDIR)
            throw Error(ErrorKind::Usage, "exists already", folder.string());
        throw platform::errnoError(errno, "cannot create the folder", folder.string());
    }
    return folder;
}

int64_t unusedSceneNumber(QVDataManager& catalogue, const std::string& name) {
    uint64_t hash = 14695981039346656037u;
    for (const unsigned char letter : name) hash = (hash ^ letter) * 1099511628211u;
    int64_t number = kFirstNumber + static_cast<int64_t>(hash % kNumberRange);
    while (catalogue.isSignSceneHasWithSid(number)) ++number;
    return number;
}

}  // namespace multiscene
