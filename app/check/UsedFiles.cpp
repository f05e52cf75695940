#include "app/check/UsedFiles.h"

#include <filesystem>
#include <vector>

#include "app/check/Suggestion.h"
#include "other/QVUtil.h"

namespace multiscene {

using platform::FileGate;

namespace {

constexpr const char* kOwnFolder = "$(currentScenePlistROOT)";

std::string remedyOfMissing(const std::filesystem::path& file) {
    std::vector<std::string> names;
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path(), failure))
        names.push_back(entry.path().filename().string());
    const std::string meant = didYouMean(file.filename().string(), {names.begin(), names.end()});
    return meant.empty() ? "add the file or correct the name" : meant;
}

/// What to write instead of a text that is no path.
std::string remedyOfNoPath(const std::string& path, const std::string& sceneFolder) {
    if (path.find('\\') != std::string::npos) return "write \"/\" between folders";
    const std::string macro(QVUtil::firstComponent(path));
    if (macro == kOwnFolder && sceneFolder.empty())
        return "give the scene's record its \"sceneResourceFolderPath\"";
    if (!macro.starts_with("$("))
        return "write \"" + std::string(kOwnFolder) + "/" + path + "\" for a file of the template";
    const std::string meant = didYouMean(macro, QVMultiSceneRenderShareSettings::pathMacros());
    return meant.empty() ? "begin with \"" + std::string(kOwnFolder) + "/\"" : meant;
}

}  // namespace

std::optional<Finding> judgeFileName(Playback& playback, const std::string& path,
                                     const std::string& sceneFolder, Finding place) {
    return openFileName(playback, path, sceneFolder, std::move(place)).finding;
}

NamedFile openFileName(Playback& playback, const std::string& path, const std::string& sceneFolder,
                       Finding place) {
    NamedFile file;
    file.path = playback.settings().multiSceneRenderPathResourcesWithString(path, sceneFolder);
    if (file.path.empty()) {
        const bool isMacro = path.starts_with("$(");
        place.message =
            "\"" + path + (isMacro ? "\" is no path" : "\" is no path, and no input has that key");
        place.remedy = remedyOfNoPath(path, sceneFolder);
        file.finding = std::move(place);
        return file;
    }
    file.opened = playback.gate().open(file.path);
    const FileGate::Verdict verdict = file.opened.verdict;
    if (verdict == FileGate::Verdict::Allowed) return file;
    place.message = "\"" + path + "\" " + describe(verdict);
    place.remedy = verdict == FileGate::Verdict::Missing ? remedyOfMissing(file.path)
                                                         : "put the file itself into the template's folder";
    file.finding = std::move(place);
    return file;
}

}  // namespace multiscene
