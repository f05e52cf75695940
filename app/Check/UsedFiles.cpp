#include "app/Check/UsedFiles.h"

#include "other/QVMultiSceneRenderShareSettings.h"

namespace multiscene {

using platform::FileGate;

namespace {

std::string remedyOf(FileGate::Verdict verdict) {
    if (verdict == FileGate::Verdict::Missing) return "add the file or correct the name";
    return "put the file itself into the template's folder";
}

}  // namespace

std::optional<Finding> judgeFileName(const std::string& path, const std::string& sceneFolder, Finding place) {
    const std::string resolved =
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(path, sceneFolder);
    if (resolved.empty()) {
        place.message = "\"" + path + "\" is no path, and no input of the user has that key";
        place.remedy = "write \"$(currentScenePlistROOT)/" + path + "\" for a file of the template";
        return place;
    }
    const FileGate::Verdict verdict = FileGate::shared().check(resolved);
    if (verdict == FileGate::Verdict::Allowed) return std::nullopt;
    place.message = "\"" + path + "\" " + describe(verdict);
    place.remedy = remedyOf(verdict);
    return place;
}

}  // namespace multiscene
