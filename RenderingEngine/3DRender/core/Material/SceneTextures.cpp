#include "core/Material/SceneTextures.h"

#include <algorithm>
#include <functional>
#include <set>

namespace multiscene {

using platform::Value;

namespace {

/// Wherever it stands in the scene; one too many costs time, no pixel.
bool holds(const Value& content, const std::function<bool(const Value::Dictionary&)>& isWanted) {
    const auto& dictionary = content.dictionary();
    const auto& array = content.array();
    return isWanted(dictionary) ||
           std::ranges::any_of(dictionary, [&](const auto& each) { return holds(each.second, isWanted); }) ||
           std::ranges::any_of(array, [&](const Value& each) { return holds(each, isWanted); });
}

bool showsScenes(const Value::Dictionary& info) {
    const auto type = info.find("textureType");
    if (type == info.end()) return false;
    const std::string name = type->second.stringValue();
    return name == kCurrentSceneTexture || name == kNextSceneTexture;
}

bool drawsIntoTexture(const Value::Dictionary& info) {
    const auto key = info.find("isRenderToTexture");
    return key != info.end() && key->second.boolValue();
}

/// Scenes that are played other than as transitions of type 0.
std::set<int64_t> scenesBesideTransitions(const SceneGroup& group) {
    std::set<int64_t> numbers;
    for (const Value& entry : group.entries) {
        numbers.insert(entry.integer("mainSceneId"));
        const Value& transition = entry["sceneTansitionsInfo"];
        if (transition && transition.integer("sceneTansitionsType") != 0)
            numbers.insert(transition.integer("tansitionsSceneId"));
    }
    return numbers;
}

}  // namespace

bool outlastTheirTurn(const SceneGroup& group) {
    const std::set<int64_t> beside = scenesBesideTransitions(group);
    return std::ranges::any_of(group.scenes, [&](const auto& entry) {
        const auto& [number, scene] = entry;
        return holds(scene.content, showsScenes) &&
               (beside.contains(number) || holds(scene.content, drawsIntoTexture));
    });
}

}  // namespace multiscene
