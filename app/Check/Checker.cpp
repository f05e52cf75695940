#include "app/Check/Checker.h"

#include <algorithm>

#include "app/Check/KeyJudge.h"
#include "app/Check/SceneRules.h"
#include "app/Check/TemplateRules.h"
#include "app/Check/UsedFiles.h"
#include "app/Model/TemplateFolder.h"
#include "app/Model/TemplateKeys.h"
#include "other/QVUtil.h"
#include "other/SceneCatalogue.h"
#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/base/PropertyListFaults.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene {

using platform::FileGate;
using platform::Value;
namespace fs = std::filesystem;

namespace {

Finding findingOf(const platform::Error& error, const std::string& file) {
    return {Severity::Error, error.file().empty() ? file : error.file(), error.key(), error.message(), {}};
}

/// The dictionary in a property list; none, with a finding, when there is none.
Value readDictionary(const std::string& file, Findings& findings) {
    const FileGate::Opened opened = FileGate::shared().open(file);
    if (opened.verdict != FileGate::Verdict::Allowed) {
        findings.push_back({Severity::Error, file, "", platform::describe(opened.verdict), {}});
        return {};
    }
    try {
        const auto bytes = platform::readFile(opened.file, file, platform::PropertyListLimits().maxBytes);
        const Value content = platform::parsePropertyList(bytes, file);
        for (const platform::PropertyListFault& fault : platform::propertyListFaults(bytes))
            findings.push_back(
                {Severity::Error, file, "", "line " + std::to_string(fault.line) + ": " + fault.message, {}});
        if (content.isDictionary()) return content;
        findings.push_back({Severity::Error, file, "", "holds no dictionary", {}});
    } catch (const platform::Error& error) {
        findings.push_back(findingOf(error, file));
    }
    return {};
}

void judgeKeys(const KeyTable& table, const Value& content, const std::string& file, Findings& findings) {
    KeyJudge judge(file, findings);
    walkDictionary(table, content, "", judge);
}

void judgeScene(const SceneView& scene, Findings& findings) {
    judgeKeys(sceneFileKeys, scene.content, scene.file, findings);
    for (const SceneRule rule : sceneRules()) rule(scene, findings);
}

void judgeGroup(const GroupView& group, Findings& findings) {
    for (const auto& [number, scene] : group.scenes) judgeScene(scene, findings);
    for (const GroupRule rule : groupRules()) rule(group, findings);
}

void addScene(GroupView& group, int64_t number, const std::string& file, const std::string& folder,
              Findings& findings) {
    if (group.scenes.contains(number)) return;
    const Value content = readDictionary(file, findings);
    if (content.isDictionary())
        group.scenes.emplace(number, sceneViewOf(file, folder, content));
    else
        group.unreadable.insert(number);
}

/// Every spelling under which a scene of the group finds a value of the user.
void shareUserKeys(GroupView& group) {
    std::set<std::string> spellings = group.userKeys;
    for (const std::string& identifier : group.identifiers())
        for (const std::string& key : group.userKeys)
            if (key.ends_with(identifier)) spellings.insert(key.substr(0, key.size() - identifier.size()));
    for (auto& [number, scene] : group.scenes) scene.userKeys = spellings;
}

void addRecordScenes(TemplateView& view, Findings& findings) {
    for (size_t index = 0; index < view.records().size(); ++index) {
        const Value& record = view.records()[index];
        const std::string path = record.string("scenePlistPath");
        const Finding place{Severity::Error,
                            view.file,
                            "installScenes[" + std::to_string(index) + "].scenePlistPath",
                            {},
                            {}};
        if (const auto finding = judgeFileName(path, "", place)) {
            view.group.unreadable.insert(record.integer("sId"));
            const bool isKnown = std::any_of(findings.begin(), findings.end(), [&](const Finding& known) {
                return known.keyPath == finding->keyPath;
            });
            if (!isKnown) findings.push_back(*finding);
            continue;
        }
        addScene(view.group, record.integer("sId"), QVUtil::multiScenePathWithString(path),
                 QVUtil::multiScenePathWithString(record.string("sceneResourceFolderPath")), findings);
    }
}

GroupView ownGroup(const TemplateView& view) {
    GroupView group;
    group.file = view.file;
    group.keyPath = "installScenes[0].wechartTempletInfo.sceneGroup";
    group.entries = view.inputs().array("sceneGroup");
    if (group.entries.empty() && !view.records().empty())
        group.entries = {Value::Dictionary{{"mainSceneId", view.records()[0]["sId"]}}};
    for (const Value& input : view.inputs().array("userInputArray"))
        group.userKeys.insert(input.string("renderMapKey"));
    return group;
}

void judgeTemplate(const TemplateFolder& folder, Findings& findings) {
    TemplateView view{folder.plistPath().string(), folder.name, folder.description, {}};
    judgeKeys(templateFileKeys, view.description, view.file, findings);
    try {
        requireOwnPaths(folder);
    } catch (const platform::Error& error) {
        findings.push_back(findingOf(error, view.file));
    }
    view.group = ownGroup(view);
    addRecordScenes(view, findings);
    shareUserKeys(view.group);
    judgeGroup(view.group, findings);
    for (const TemplateRule rule : templateRules()) rule(view, findings);
}

Findings checkTemplate(const fs::path& folder) {
    Findings findings;
    const fs::path absolute = (fs::absolute(folder) / "").lexically_normal().parent_path();
    FileGate::shared().allowFolder(absolute);
    QVUtil::setSceneRoot(absolute.parent_path().string());
    try {
        const TemplateFolder read = readTemplateFolder(absolute);
        readDictionary(read.plistPath().string(), findings);  // for the faults that reading passes over
        judgeTemplate(read, findings);
    } catch (const platform::Error& error) {
        findings.push_back(findingOf(error, absolute.string()));
    }
    QVUtil::setSceneRoot("");
    return findings;
}

void addCatalogueScenes(GroupView& group, Findings& findings) {
    const auto catalogue = SceneCatalogue::shared();
    if (!catalogue) return;
    for (const Value& entry : group.entries)
        for (const int64_t number :
             {entry.integer("mainSceneId"), entry["sceneTansitionsInfo"].integer("tansitionsSceneId")})
            if (const auto record = catalogue->querySceneWithSid(number))
                addScene(group, number, record->scenePlistPath, record->sceneResourceFolderPath, findings);
}

Findings checkGroup(const std::string& file, const Value& content) {
    Findings findings;
    judgeKeys(sceneGroupFileKeys, content, file, findings);
    GroupView group{file, "scene", content.array("scene"), {}, {}, {}};
    for (const auto& [key, value] : content["userMediaMap"].dictionary()) group.userKeys.insert(key);
    addCatalogueScenes(group, findings);
    shareUserKeys(group);
    judgeGroup(group, findings);
    return findings;
}

Findings checkScene(const fs::path& file, const Value& content) {
    Findings findings;
    judgeScene(sceneViewOf(file.string(), file.parent_path().string() + "/", content), findings);
    return findings;
}

Findings checkFile(const fs::path& file) {
    FileGate::shared().allowFolder(file.parent_path());
    Findings findings;
    const Value content = readDictionary(file.string(), findings);
    if (!content.isDictionary()) return findings;
    if (content.has("installScenes")) return checkTemplate(file.parent_path());
    const bool isGroup = content.has("scene") || content.has("sceneGroupFpsTotal");
    const Findings more = isGroup ? checkGroup(file.string(), content) : checkScene(file, content);
    findings.insert(findings.end(), more.begin(), more.end());
    return findings;
}

}  // namespace

Findings checkPath(const fs::path& path) {
    FileGate::shared().allowFolder(platform::resourcesFolder());
    const fs::path absolute = fs::absolute(path).lexically_normal();
    std::error_code failure;
    return fs::is_directory(absolute, failure) ? checkTemplate(absolute) : checkFile(absolute);
}

}  // namespace multiscene
