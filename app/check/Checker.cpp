#include "app/check/Checker.h"

#include "app/check/CheckedFile.h"
#include "app/check/Judgement.h"
#include "app/template/OpenedFiles.h"
#include "app/template/TemplateFolder.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Paths.h"

namespace multiscene {

using platform::Value;
namespace fs = std::filesystem;

namespace {

Findings checkTemplate(const fs::path& folder, Playback& playback) {
    const fs::path absolute = (fs::absolute(folder) / "").lexically_normal().parent_path();
    playback.gate().allowFolder(absolute);
    playback.settings().setScenePath(absolute.parent_path().string());
    try {
        return judgeTemplate(readTemplateFolder(absolute), nullptr, playback).findings;
    } catch (const platform::Error& error) {
        return {findingOf(error, absolute.string())};
    }
}

Findings checkGroup(const fs::path& file, const Value& content, SceneCatalogue* catalogue,
                    Playback& playback) {
    openSceneGroupFiles(file.parent_path(), content["userMediaMap"], playback);
    return judgeSceneGroup(file.string(), content, catalogue, playback).findings;
}

Findings checkFile(const fs::path& file, SceneCatalogue* catalogue, Playback& playback) {
    playback.gate().allowFolder(file.parent_path());
    Findings findings;
    const Value content = readDictionary(file.string(), playback.gate(), findings);
    if (!content.isDictionary()) return findings;
    if (content.has("installScenes")) return checkTemplate(file.parent_path(), playback);
    const bool isGroup = content.has("scene") || content.has("sceneGroupFpsTotal");
    const Findings more = isGroup ? checkGroup(file, content, catalogue, playback)
                                  : judgeSceneFile(file.string(), content, playback).findings;
    findings.insert(findings.end(), more.begin(), more.end());
    return findings;
}

}  // namespace

Findings checkPath(const fs::path& path, SceneCatalogue* catalogue) {
    Playback playback;
    playback.gate().allowFolder(platform::resourcesFolder());
    const fs::path absolute = fs::absolute(path).lexically_normal();
    return platform::isFolder(absolute) ? checkTemplate(absolute, playback)
                                        : checkFile(absolute, catalogue, playback);
}

}  // namespace multiscene
