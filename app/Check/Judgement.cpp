#include "app/Check/Judgement.h"

#include <algorithm>

#include "app/Check/CheckedFile.h"
#include "app/Check/KeyJudge.h"
#include "app/Check/SceneRules.h"
#include "app/Check/TemplateRules.h"
#include "app/Check/UsedFiles.h"
#include "app/Model/TemplateKeys.h"
#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/Limits.h"
#include "videoRenderCore/SceneFileKeys.h"
#include "videoRenderCore/SceneLimits.h"

namespace multiscene {

using platform::Value;

namespace {

void judgeKeys(const KeyTable& table, const Value& content, const std::string& file, Findings& findings) {
    KeyJudge judge(file, findings);
    walkDictionary(table, content, "", judge);
}

void judgeScene(const SceneView& scene, Judgement& judgement) {
    if (const auto beyond = sceneBeyondLimits(scene.content, scene.file))
        return judgement.findings.push_back(findingOf(*beyond, scene.file));
    judgeKeys(sceneFileKeys, scene.content, scene.file, judgement.findings);
    for (const SceneRule rule : sceneRules()) rule(scene, judgement.findings);
    judgement.scenes.emplace(scene.file, scene.content);
}

void judgeGroup(const GroupView& group, Judgement& judgement) {
    for (const auto& [number, scene] : group.scenes) judgeScene(scene, judgement);
    for (const GroupRule rule : groupRules()) rule(group, judgement.findings);
}

void addScene(GroupView& group, int64_t number, const std::string& file, const std::string& folder,
              Findings& findings) {
    if (group.scenes.contains(number) || group.unreadable.contains(number)) return;
    const Value content = readDictionary(file, findings);
    if (!content.isDictionary()) {
        group.unreadable.insert(number);
        return;
    }
    group.scenes.emplace(number, sceneViewOf(file, folder, content)).first->second.media = group.media;
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

void addCatalogueScenes(GroupView& group, SceneCatalogue* catalogue, Findings& findings) {
    if (!catalogue) return;
    for (const Value& entry : group.entries)
        for (const int64_t number :
             {entry.integer("mainSceneId"), entry["sceneTansitionsInfo"].integer("tansitionsSceneId")})
            if (const auto record = catalogue->querySceneWithSid(number))
                addScene(group, number, record->scenePlistPath, record->sceneResourceFolderPath, findings);
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

}  // namespace

Judgement judgeTemplate(const TemplateFolder& folder, SceneCatalogue* others) {
    Judgement judgement;
    TemplateView view{folder.plistPath().string(), folder.name, folder.description, {}};
    readDictionary(view.file, judgement.findings);  // for the faults that reading the folder passed over
    judgeKeys(templateFileKeys, view.description, view.file, judgement.findings);
    try {
        requireOwnPaths(folder);
    } catch (const platform::Error& error) {
        judgement.findings.push_back(findingOf(error, view.file));
    }
    view.group = ownGroup(view);
    addRecordScenes(view, judgement.findings);
    addCatalogueScenes(view.group, others, judgement.findings);
    shareUserKeys(view.group);
    judgeGroup(view.group, judgement);
    for (const TemplateRule rule : templateRules()) rule(view, judgement.findings);
    return judgement;
}

Judgement judgeSceneGroup(const std::string& file, const Value& content, SceneCatalogue* catalogue) {
    Judgement judgement;
    const Value::Array& entries = content.array("scene");
    if (entries.size() > platform::Limits::maxGroupScenes)
        return {{{Severity::Error,
                  file,
                  "scene",
                  platform::beyondLimit(entries.size(), "scenes", platform::Limits::maxGroupScenes),
                  {}}},
                {}};
    judgeKeys(sceneGroupFileKeys, content, file, judgement.findings);
    // Its scenes may look up more than the map gives: what nobody gives stays empty.
    GroupView group{file, "scene", entries, {}, {}, {}};
    addCatalogueScenes(group, catalogue, judgement.findings);
    judgeGroup(group, judgement);
    return judgement;
}

Judgement judgeSceneFile(const std::string& file, const Value& content) {
    Judgement judgement;
    judgeScene(sceneViewOf(file, file.substr(0, file.rfind('/') + 1), content), judgement);
    return judgement;
}

}  // namespace multiscene
