#include "other/QVMultiSceneGropPlistFileManager.h"

#include <algorithm>
#include <limits>

#include "other/UserFilm.h"
#include "platform/base/PropertyList.h"

namespace multiscene {

using platform::Value;

namespace {

Value::Dictionary sceneEntry(int64_t sceneId, const std::string& sceneIdentifier) {
    Value::Dictionary entry;
    if (!sceneIdentifier.empty()) entry[sceneIdentifier] = sceneIdentifier;
    entry["mainSceneId"] = sceneId;
    return entry;
}

int64_t sceneLength(const Value& entry, const Value& userMediaMap, SceneCatalogue& catalogue) {
    const auto scene = catalogue.querySceneWithSid(entry.integer("mainSceneId"));
    if (!scene) return 0;
    if (scene->fpsLength >= 1 || scene->sourceType != kLengthFromUserVideo) return scene->fpsLength;
    return userMediaMap.integer(kUserVideoFrames + entry.string("sceneIdentifier"));
}

int64_t overlapWithNext(const Value& entry) {
    const Value& transition = entry["sceneTansitionsInfo"];
    const bool overlaps = transition && transition.integer("sceneTansitionsType") == 0 &&
                          transition.integer("tansitionsSceneId") >= 1;
    return overlaps ? transition.integer("fpsTotal") : 0;
}

int32_t saturatedTo32Bits(int64_t value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

}  // namespace

int32_t totalFpsOfSceneGroup(const Value::Array& scenes, const Value& userMediaMap,
                             SceneCatalogue& catalogue) {
    int64_t total = 0;
    for (size_t index = 0; index < scenes.size(); ++index) {
        total += saturatedTo32Bits(sceneLength(scenes[index], userMediaMap, catalogue));
        if (index + 1 < scenes.size()) total -= saturatedTo32Bits(overlapWithNext(scenes[index]));
    }
    return saturatedTo32Bits(total);
}

void QVMultiSceneGropPlistFileManager::addSceneWithId(int64_t sceneId, const std::string& sceneIdentifier) {
    Value::Dictionary entry = sceneEntry(sceneId, sceneIdentifier);
    entry["sceneIdentifier"] = sceneIdentifier;
    sceneDataArray_.emplace_back(std::move(entry));
}

void QVMultiSceneGropPlistFileManager::addSceneWithId(int64_t sceneId, const std::string& sceneIdentifier,
                                                      int64_t tansitionsSceneId, int64_t sceneTansitionsFps,
                                                      int64_t sceneTansitionsType) {
    Value::Dictionary entry = sceneEntry(sceneId, sceneIdentifier);
    if (tansitionsSceneId >= 1) {
        entry["sceneTansitionsInfo"] = Value::Dictionary{{"tansitionsSceneId", tansitionsSceneId},
                                                         {"fpsTotal", sceneTansitionsFps},
                                                         {"sceneTansitionsType", sceneTansitionsType}};
    }
    sceneDataArray_.emplace_back(std::move(entry));
}

void QVMultiSceneGropPlistFileManager::addObjectToUserMap(Value value, const std::string& key,
                                                          const std::string& sceneIdentifier) {
    userMediaMap_.insert_or_assign(key + sceneIdentifier, std::move(value));
}

int32_t QVMultiSceneGropPlistFileManager::computeTotalFps() const {
    return totalFpsOfSceneGroup(sceneDataArray_, Value(userMediaMap_), catalogue_);
}

Value QVMultiSceneGropPlistFileManager::groupDictionary() const {
    return Value::Dictionary{{"scene", Value(sceneDataArray_)},
                             {"userMediaMap", Value(userMediaMap_)},
                             {"sceneGroupFpsTotal", Value(computeTotalFps())}};
}

void QVMultiSceneGropPlistFileManager::commit() const {
    platform::writePropertyList(plistPath_, groupDictionary());
}

}  // namespace multiscene
