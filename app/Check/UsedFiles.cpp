#include "app/Check/UsedFiles.h"

#include "core/GLESUtils/PvrFile.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/image/ImageDecoder.h"

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

std::optional<Finding> judgeFileContent(const std::string& path, const std::string& sceneFolder,
                                        const RequireContent& require, Finding place) {
    FileGate::Opened opened = FileGate::shared().open(
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(path, sceneFolder));
    if (opened.verdict != FileGate::Verdict::Allowed) return std::nullopt;
    try {
        require(std::move(opened.file), path);
        return std::nullopt;
    } catch (const platform::Error& error) {
        place.message = "\"" + path + "\": " + error.message();
        place.remedy = "replace the file";
        return place;
    }
}

void requirePicture(platform::FileHandle file, const std::string& name) {
    platform::readImageSize(file, {name, platform::ErrorKind::Template});
}

void requirePvr(platform::FileHandle file, const std::string& name) {
    const PvrFile texture(platform::readFile(file, name, PvrFile::maxBytes));
    if (!texture.problem().empty())
        throw platform::Error(platform::ErrorKind::Template, texture.problem(), name);
}

}  // namespace multiscene
