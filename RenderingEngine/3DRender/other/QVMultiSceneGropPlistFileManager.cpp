#include "other/QVMultiSceneGropPlistFileManager.h"

#include "platform/base/PropertyList.h"

namespace multiscene {

using platform::Value;

namespace {

constexpr const char *kEntries = "scene", *kUserMediaMap = "userMediaMap", *kTotal = "sceneGroupFpsTotal";

Value::Dictionary sceneEntry(int64_t sceneId, const std::string& sceneIdentifier) {
    Value::Dictionary entry;
    if (!sceneIdentifier.empty()) entry[sceneIdentifier] = sceneIdentifier;
    entry["mainSceneId"] = sceneId;
    return entry;
}

}  // namespace

void QVMultiSceneGropPlistFileManager::addSceneWithId(int64_t sceneId, const std::string& sceneIdentifier) {
    Value::Dictionary entry = sceneEntry(sceneId, sceneIdentifier);
    entry["sceneIdentifier"] = sceneIdentifier;
    entries_.emplace_back(std::move(entry));
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
    entries_.emplace_back(std::move(entry));
}

void QVMultiSceneGropPlistFileManager::addObjectToUserMap(Value value, const std::string& key,
                                                          const std::string& sceneIdentifier) {
    userMediaMap_.insert_or_assign(key + sceneIdentifier, std::move(value));
}

SceneGroup QVMultiSceneGropPlistFileManager::group() const {
    return {entries_, Value(userMediaMap_), scenesNamedBy(entries_, catalogue_)};
}

void QVMultiSceneGropPlistFileManager::write(const std::filesystem::path& file, const SceneGroup& group) {
    platform::writePropertyList(file, Value::Dictionary{{kEntries, Value(group.entries)},
                                                        {kUserMediaMap, group.userMediaMap},
                                                        {kTotal, group.totalFrames()}});
}

SceneGroup QVMultiSceneGropPlistFileManager::groupOf(const Value& content) {
    return {content.array(kEntries), content[kUserMediaMap], {}};
}

}  // namespace multiscene
