#include "app/Check/Checker.h"

#include "app/Check/CheckedFile.h"
#include "app/Check/Judgement.h"
#include "app/Model/TemplateFolder.h"
#include "app/Other/OpenedFiles.h"
#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"

namespace multiscene {

using platform::FileGate;
using platform::Value;
namespace fs = std::filesystem;

namespace {

Findings checkTemplate(const fs::path& folder) {
    Findings findings;
    const fs::path absolute = (fs::absolute(folder) / "").lexically_normal().parent_path();
    FileGate::shared().allowFolder(absolute);
    QVUtil::setSceneRoot(absolute.parent_path().string());
    try {
        findings = judgeTemplate(readTemplateFolder(absolute), nullptr).findings;
    } catch (const platform::Error& error) {
        findings.push_back(findingOf(error, absolute.string()));
    }
    QVUtil::setSceneRoot("");
    return findings;
}

Findings checkGroup(const fs::path& file, const Value& content, SceneCatalogue* catalogue) {
    openSceneGroupFiles(file.parent_path(), content["userMediaMap"]);
    return judgeSceneGroup(file.string(), content, catalogue).findings;
}

Findings checkFile(const fs::path& file, SceneCatalogue* catalogue) {
    FileGate::shared().allowFolder(file.parent_path());
    Findings findings;
    const Value content = readDictionary(file.string(), findings);
    if (!content.isDictionary()) return findings;
    if (content.has("installScenes")) return checkTemplate(file.parent_path());
    const bool isGroup = content.has("scene") || content.has("sceneGroupFpsTotal");
    const Findings more =
        isGroup ? checkGroup(file, content, catalogue) : judgeSceneFile(file.string(), content).findings;
    findings.insert(findings.end(), more.begin(), more.end());
    return findings;
}

}  // namespace

Findings checkPath(const fs::path& path, SceneCatalogue* catalogue) {
    FileGate::shared().allowFolder(platform::resourcesFolder());
    const fs::path absolute = fs::absolute(path).lexically_normal();
    std::error_code failure;
    return fs::is_directory(absolute, failure) ? checkTemplate(absolute) : checkFile(absolute, catalogue);
}

}  // namespace multiscene
