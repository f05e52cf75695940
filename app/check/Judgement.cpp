#include "app/check/Judgement.h"

#include <algorithm>

#include "app/check/CheckedFile.h"
#include "app/check/KeyJudge.h"
#include "app/check/SceneRules.h"
#include "app/check/TemplateRules.h"
#include "app/check/UsedFiles.h"
#include "app/template/TemplateKeys.h"
#include "group/SceneGroup.h"
#include "platform/base/Error.h"
#include "platform/base/Limits.h"
#include "sceneFile/SceneFileKeys.h"
#include "sceneFile/SceneLimits.h"

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

/// A scene whose file has been opened, or tried to.
void addScene(GroupView& group, int64_t number, const std::string& file, const std::string& folder,
              const platform::FileGate::Opened& opened, Findings& findings) {
    const Value content = readDictionary(opened, file, findings);
    if (!content.isDictionary()) {
        group.unreadable.insert(number);
        return;
    }
    group.scenes.emplace(number, sceneViewOf(file, folder, content)).first->second.media = group.media;
}

bool isKnown(const GroupView& group, int64_t number) {
    return group.scenes.contains(number) || group.unreadable.contains(number);
}

/// Every spelling under which a scene of the group finds a value of the user.
void shareUserKeys(GroupView& group) {
    std::set<std::string> spellings = group.userKeys;
    for (const std::string& identifier : group.identifiers())
        for (const std::string& key : group.userKeys)
            if (key.ends_with(identifier)) spellings.insert(key.substr(0, key.size() - identifier.size()));
    for (auto& [number, scene] : group.scenes) scene.userKeys = spellings;
}

void addRecordScene(TemplateView& view, const Value& record, const Finding& place, Findings& findings) {
    const int64_t number = record.integer("sId");
    const NamedFile file = openFileName(view.group.playback(), record.string("scenePlistPath"), "", place);
    if (file.finding) {
        view.group.unreadable.insert(number);
        const bool isTold = std::any_of(findings.begin(), findings.end(),
                                        [&](const Finding& told) { return told.keyPath == place.keyPath; });
        if (!isTold) findings.push_back(*file.finding);
    } else if (!isKnown(view.group, number)) {
        addScene(view.group, number, file.path,
                 view.group.playback().settings().multiSceneRenderPathResourcesWithString(
                     record.string("sceneResourceFolderPath"), ""),
                 file.opened, findings);
    }
}

void addRecordScenes(TemplateView& view, Findings& findings) {
    for (size_t index = 0; index < view.records().size(); ++index) {
        const std::string keyPath = "installScenes[" + std::to_string(index) + "].scenePlistPath";
        addRecordScene(view, view.records()[index], {Severity::Error, view.file, keyPath, {}, {}}, findings);
    }
}

void addCatalogueScenes(GroupView& group, SceneCatalogue* catalogue, Findings& findings) {
    if (!catalogue) return;
    for (const auto& [number, scene] : scenesNamedBy(group.entries, *catalogue))
        if (!isKnown(group, number))
            addScene(group, number, scene.record.scenePlistPath, scene.record.sceneResourceFolderPath,
                     group.playback().gate().open(scene.record.scenePlistPath), findings);
}

GroupView ownGroup(const TemplateView& view, Playback& playback) {
    GroupView group;
    group.media = std::make_shared<MediaReader>(playback);
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

Judgement judgeTemplate(const TemplateFolder& folder, SceneCatalogue* others, Playback& playback) {
    Judgement judgement;
    TemplateView view{folder.plistPath().string(), folder.name, folder.description, {}};
    addFaults(folder.faults, view.file, judgement.findings);
    judgeKeys(templateFileKeys, view.description, view.file, judgement.findings);
    try {
        requireOwnPaths(folder, playback.settings().scenePath());
    } catch (const platform::Error& error) {
        judgement.findings.push_back(findingOf(error, view.file));
    }
    view.group = ownGroup(view, playback);
    addRecordScenes(view, judgement.findings);
    addCatalogueScenes(view.group, others, judgement.findings);
    shareUserKeys(view.group);
    judgeGroup(view.group, judgement);
    for (const TemplateRule rule : templateRules()) rule(view, judgement.findings);
    return judgement;
}

Judgement judgeSceneGroup(const std::string& file, const Value& content, SceneCatalogue* catalogue,
                          Playback& playback) {
    Judgement judgement;
    const Value::Array& entries = content.array("scene");
    if (entries.size() > platform::limitOf("maxGroupScenes"))
        return {{{Severity::Error,
                  file,
                  "scene",
                  platform::beyondLimit(entries.size(), "scenes", platform::limitOf("maxGroupScenes")),
                  {}}},
                {}};
    judgeKeys(sceneGroupFileKeys, content, file, judgement.findings);
    // Its scenes may look up more than the map gives: what nobody gives stays empty.
    GroupView group{file, "scene", entries, {}, {}, {}, std::make_shared<MediaReader>(playback)};
    addCatalogueScenes(group, catalogue, judgement.findings);
    judgeGroup(group, judgement);
    return judgement;
}

Judgement judgeSceneFile(const std::string& file, const Value& content, Playback& playback) {
    Judgement judgement;
    SceneView scene = sceneViewOf(file, file.substr(0, file.rfind('/') + 1), content);
    scene.media = std::make_shared<MediaReader>(playback);
    judgeScene(scene, judgement);
    return judgement;
}

}  // namespace multiscene
