#include <algorithm>
#include <array>
#include <optional>

#include "app/check/TemplateRules.h"
#include "core/Material/TextureInfoKeys.h"
#include "format/DictionaryWalk.h"
#include "platform/base/Saturating.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

using platform::saturatingDifference;
using platform::saturatingSum;
using platform::Value;

std::span<const GroupRule> groupRules() {
    static constexpr std::array table{
        rules::groupHasScenes,
        rules::scenesAreInTheCatalogue,
        rules::transitionsFitTheirScenes,
        rules::transitionsLeadToAScene,
        rules::sceneTexturesAreInTransitions,
        rules::overlaysEndBeforeTheNext,
        rules::keysDoNotCollideWithIdentifiers,
    };
    return table;
}

namespace rules {

namespace {

enum class TransitionKind { Texture = 0, Overlay = 1 };

struct Transition {
    int64_t sceneId = 0, frames = 0, type = 0;

    bool is(TransitionKind kind) const { return sceneId >= 1 && type == static_cast<int64_t>(kind); }
};

Transition transitionOf(const Value& entry) {
    const Value& info = entry["sceneTansitionsInfo"];
    return {info.integer("tansitionsSceneId"), info.integer("fpsTotal"), info.integer("sceneTansitionsType")};
}

std::string entryPath(const GroupView& group, size_t index, const std::string& key = {}) {
    return group.keyPath + "[" + std::to_string(index) + "]" + (key.empty() ? "" : "." + key);
}

std::optional<int64_t> lastFrameOf(const GroupView& group, int64_t sceneId) {
    const SceneView* scene = group.scene(sceneId);
    return scene ? scene->lastFrame() : std::nullopt;
}

void requireScene(const GroupView& group, const Value& value, const std::string& keyPath,
                  Findings& findings) {
    const auto wanted = frameNumberOf(value);
    if (!wanted || group.scene(*wanted) || group.unreadable.contains(*wanted)) return;
    const int64_t number = *wanted;
    findings.push_back({Severity::Error, group.file, keyPath,
                        "scene " + std::to_string(number) + " is not in the catalogue",
                        "list it in \"installScenes\", or install the template that brings it"});
}

/// Frames of a scene that the transition into it has shown already.
int64_t framesShownBefore(const GroupView& group, size_t index) {
    if (index == 0) return 0;
    const Transition before = transitionOf(group.entries[index - 1]);
    return before.is(TransitionKind::Texture) ? before.frames : 0;
}

/// A transition starts after a frame that the ending scene plays alone, else it is left out; and a following
/// scene that has no frame left after it plays one beyond its end.
void judgeTransition(const GroupView& group, size_t index, Findings& findings) {
    const Transition transition = transitionOf(group.entries[index]);
    const std::string keyPath = entryPath(group, index, "sceneTansitionsInfo.fpsTotal");
    const auto judge = [&](int64_t sceneId, int64_t otherFrames, const char* which) {
        const auto last = lastFrameOf(group, sceneId);
        const int64_t left = last ? saturatingDifference(framesTo(*last), otherFrames) : 0;
        if (!last || transition.frames <= left) return;
        findings.push_back({Severity::Error, group.file, keyPath,
                            "the transition of " + std::to_string(transition.frames) +
                                " frames is longer than the " + std::to_string(std::max<int64_t>(left, 0)) +
                                " that the " + which + " scene has for it",
                            "shorten it"});
    };
    const bool isTexture = transition.is(TransitionKind::Texture);
    if (isTexture || transition.is(TransitionKind::Overlay))
        judge(group.entries[index].integer("mainSceneId"), saturatingSum(framesShownBefore(group, index), 1),
              "ending");
    if (!isTexture) return;
    judge(transition.sceneId, 0, "transition");
    if (index + 1 < group.entries.size())
        judge(group.entries[index + 1].integer("mainSceneId"), 1, "following");
}

/// What shows another scene, in a scene that composes no transition.
class SceneTextures : public DictionaryVisitor {
  public:
    SceneTextures(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (!keys.has(sceneTextureKeys)) return;
        findings_.push_back(
            {Severity::Error, scene_.file, keyPath + ".textureType",
             "\"" + content.string("textureType") + "\" shows nothing outside a transition scene of type 0",
             "play this scene as a \"tansitionsSceneId\""});
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void groupHasScenes(const GroupView& group, Findings& findings) {
    if (group.entries.empty())
        findings.push_back(
            {Severity::Error, group.file, group.keyPath, "the group has no scenes", "list at least one"});
}

void scenesAreInTheCatalogue(const GroupView& group, Findings& findings) {
    for (size_t index = 0; index < group.entries.size(); ++index) {
        const Value& entry = group.entries[index];
        requireScene(group, entry["mainSceneId"], entryPath(group, index, "mainSceneId"), findings);
        if (transitionOf(entry).sceneId >= 1)
            requireScene(group, entry["sceneTansitionsInfo"]["tansitionsSceneId"],
                         entryPath(group, index, "sceneTansitionsInfo.tansitionsSceneId"), findings);
    }
}

void transitionsFitTheirScenes(const GroupView& group, Findings& findings) {
    for (size_t index = 0; index < group.entries.size(); ++index)
        if (transitionOf(group.entries[index]).sceneId >= 1) judgeTransition(group, index, findings);
}

void transitionsLeadToAScene(const GroupView& group, Findings& findings) {
    if (group.entries.empty() || !transitionOf(group.entries.back()).is(TransitionKind::Texture)) return;
    findings.push_back({Severity::Warning, group.file,
                        entryPath(group, group.entries.size() - 1, "sceneTansitionsInfo"),
                        "the last scene has no scene to change to", "remove the transition"});
}

void sceneTexturesAreInTransitions(const GroupView& group, Findings& findings) {
    std::set<int64_t> played, composing;
    for (const Value& entry : group.entries) {
        played.insert(entry.integer("mainSceneId"));
        if (transitionOf(entry).is(TransitionKind::Texture)) composing.insert(transitionOf(entry).sceneId);
    }
    for (const auto& [number, scene] : group.scenes) {
        if (!played.contains(number) || composing.contains(number)) continue;
        SceneTextures visitor(scene, findings);
        walkDictionary(sceneFileKeys, scene.content, "", visitor);
    }
}

void overlaysEndBeforeTheNext(const GroupView& group, Findings& findings) {
    int64_t sceneStart = 0;
    std::optional<int64_t> overlayEnd;
    for (size_t index = 0; index < group.entries.size(); ++index) {
        const auto last = lastFrameOf(group, group.entries[index].integer("mainSceneId"));
        if (!last) return;
        const Transition transition = transitionOf(group.entries[index]);
        const int64_t start =
            saturatingDifference(saturatingSum(sceneStart, framesTo(*last)), transition.frames);
        if (transition.sceneId >= 1 && overlayEnd && start <= *overlayEnd)
            findings.push_back({Severity::Error, group.file, entryPath(group, index, "sceneTansitionsInfo"),
                                "starts at frame " + std::to_string(start) +
                                    " of the group, while an overlay runs to frame " +
                                    std::to_string(*overlayEnd),
                                "shorten the overlay's scene or lengthen this one"});
        const auto overlayLast = lastFrameOf(group, transition.sceneId);
        if (transition.is(TransitionKind::Overlay) && overlayLast)
            overlayEnd = saturatingSum(start, *overlayLast);
        sceneStart =
            transition.is(TransitionKind::Texture) ? start : saturatingSum(sceneStart, framesTo(*last));
    }
}

void keysDoNotCollideWithIdentifiers(const GroupView& group, Findings& findings) {
    for (const std::string& identifier : group.identifiers())
        for (const std::string& key : group.userKeys)
            if (group.userKeys.contains(key + identifier))
                findings.push_back({Severity::Warning, group.file, group.keyPath,
                                    "the key \"" + key + "\" joined with the scene identifier \"" +
                                        identifier + "\" is the key of another value",
                                    "rename the identifier"});
}

}  // namespace rules
}  // namespace multiscene
