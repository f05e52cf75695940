#include "group/SceneGroup.h"

#include <algorithm>
#include <limits>

#include "group/UserFilm.h"

namespace multiscene {

using platform::Value;

namespace {

int64_t sceneLength(const SceneGroup& group, const Value& entry) {
    const SceneGroup::Scene* scene = group.scene(entry.integer("mainSceneId"));
    if (!scene) return 0;
    const SceneConfigData& record = scene->record;
    if (record.fpsLength >= 1 || record.sourceType != kLengthFromUserVideo) return record.fpsLength;
    return group.userMediaMap.integer(kUserVideoFrames + entry.string("sceneIdentifier"));
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

/// "endFps" is inclusive, so a clock that ends at the number of the user's frames shows one more.
bool playsOneMore(const SceneGroup& group, const Value& entry) {
    const SceneGroup::Scene* scene = group.scene(entry.integer("mainSceneId"));
    return scene && scene->record.fpsLength < 1 && scene->record.sourceType == kLengthFromUserVideo &&
           scene->content["TimeSource"]["FpsInfo"].string("endFps") == kUserVideoFrames;
}

}  // namespace

const SceneGroup::Scene* SceneGroup::scene(int64_t number) const {
    const auto found = scenes.find(number);
    return found == scenes.end() ? nullptr : &found->second;
}

std::set<std::string> SceneGroup::identifiers() const {
    std::set<std::string> identifiers;
    for (const Value& entry : entries)
        if (const std::string identifier = entry.string("sceneIdentifier"); !identifier.empty())
            identifiers.insert(identifier);
    return identifiers;
}

std::vector<SceneGroup::Turn> SceneGroup::turns() const {
    std::vector<Turn> turns;
    int64_t start = 0;
    for (const Value& entry : entries) {
        turns.push_back({start, saturatedTo32Bits(sceneLength(*this, entry))});
        start += turns.back().frames - saturatedTo32Bits(overlapWithNext(entry));
    }
    return turns;
}

int32_t SceneGroup::totalFrames() const {
    const std::vector<Turn> all = turns();
    return all.empty() ? 0 : saturatedTo32Bits(all.back().start + all.back().frames);
}

int64_t SceneGroup::playedFrames() const {
    return totalFrames() +
           std::ranges::count_if(entries, [this](const Value& entry) { return playsOneMore(*this, entry); });
}

SceneGroup::Scenes scenesNamedBy(const Value::Array& entries, SceneCatalogue& catalogue) {
    SceneGroup::Scenes scenes;
    std::set<int64_t> numbers;
    for (const Value& entry : entries) {
        numbers.insert(entry.integer("mainSceneId"));
        if (entry.has("sceneTansitionsInfo"))
            numbers.insert(entry["sceneTansitionsInfo"].integer("tansitionsSceneId"));
    }
    for (const int64_t number : numbers)
        if (auto record = catalogue.querySceneWithSid(number)) scenes[number].record = std::move(*record);
    return scenes;
}

}  // namespace multiscene
