#include "app/job/VideoPlaces.h"

#include <algorithm>
#include <map>
#include <optional>

#include "app/check/SceneView.h"
#include "platform/base/Saturating.h"

namespace multiscene {

using platform::Value;

namespace {

constexpr int64_t kTextureTransition = 0;

/// Frames of a transition; 0 when there is none.
int64_t transitionFrames(const Value& entry, bool onlyTexture) {
    const Value& info = entry["sceneTansitionsInfo"];
    const int64_t type = info.integer("sceneTansitionsType");
    if (info.integer("tansitionsSceneId") < 1 || (type != 0 && type != 1)) return 0;
    return onlyTexture && type != kTextureTransition ? 0 : std::max<int64_t>(info.integer("fpsTotal"), 0);
}

/// A frame of its own before a transition and after one, as every scene of a group must have.
int64_t framesForTransitions(const Value::Array& entries, size_t index) {
    const int64_t before = index == 0 ? 0 : transitionFrames(entries[index - 1], true);
    return platform::saturatingSum(platform::saturatingSum(before, transitionFrames(entries[index], false)),
                                   1);
}

/// The frames in which a node and all above it are due; an unknown end is the film's.
struct Due {
    int64_t start = 0, end = INT64_MAX;
    bool isEndKnown = true;

    void within(const FrameRange& range) {
        start = std::max(start, range.start.value_or(0));
        isEndKnown = isEndKnown && range.end;
        end = std::min(end, range.end.value_or(INT64_MAX));
    }
    int64_t frames() const { return end < start ? 0 : end - start + 1; }
};

Due dueOf(const SceneView& scene, const NodeView& node) {
    Due due;
    due.within({0, scene.lastFrame()});
    due.within(node.frames);
    for (int parent = node.parent; parent >= 0; parent = scene.nodes[static_cast<size_t>(parent)].parent)
        due.within(scene.nodes[static_cast<size_t>(parent)].frames);
    return due;
}

struct FilmNode {
    std::string key;
    Due due;
};

std::vector<FilmNode> filmNodesOf(const SceneView& scene) {
    std::vector<FilmNode> films;
    for (const NodeView& node : scene.nodes) {
        const Value& texture = node.content["TextureInfo"];
        if (texture.string("textureType") == "mp4Video")
            films.push_back({texture.string("texture"), dueOf(scene, node)});
    }
    return films;
}

class Places {
  public:
    void addScene(const SceneGroup::Scene& scene, const std::string& identifier, int64_t leastFrames) {
        for (const FilmNode& film : filmsOf(scene)) {
            const bool isFixed = film.due.isEndKnown && film.due.end != INT64_MAX;
            places.push_back({film.key, identifier, isFixed ? film.due.frames() : leastFrames,
                              isFixed ? film.due.frames() : INT64_MAX});
        }
    }

    std::vector<VideoPlace> places;

  private:
    /// A group may play one scene file many times.
    const std::vector<FilmNode>& filmsOf(const SceneGroup::Scene& scene) {
        const std::string& file = scene.record.scenePlistPath;
        auto known = films_.find(file);
        if (known == films_.end())
            known = films_
                        .emplace(file, filmNodesOf(sceneViewOf(file, scene.record.sceneResourceFolderPath,
                                                               scene.content)))
                        .first;
        return known->second;
    }

    std::map<std::string, std::vector<FilmNode>> films_;  ///< by scene file
};

}  // namespace

std::vector<VideoPlace> videoPlacesOf(const SceneGroup& group) {
    Places places;
    for (size_t index = 0; index < group.entries.size(); ++index) {
        const Value& entry = group.entries[index];
        if (const auto* scene = group.scene(entry.integer("mainSceneId")))
            places.addScene(*scene, entry.string("sceneIdentifier"),
                            framesForTransitions(group.entries, index));
        if (const auto* scene = group.scene(entry["sceneTansitionsInfo"].integer("tansitionsSceneId")))
            places.addScene(*scene, "", 1);
    }
    return std::move(places.places);
}

}  // namespace multiscene
