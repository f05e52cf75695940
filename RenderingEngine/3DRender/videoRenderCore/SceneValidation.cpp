#include "videoRenderCore/SceneValidation.h"

#include <set>

#include "core/NodeTypes.h"
#include "core/VideoTimeSource.h"
#include "core/component/QVObject3DComponentBase.h"
#include "platform/base/Limits.h"
#include "videoRenderCore/SceneFile.h"
#include "videoRenderCore/SceneLimits.h"

namespace multiscene {

namespace {

using platform::Value;
using Problems = SceneValidation::Problems;

std::string element(const std::string& list, size_t index) {
    return list + "[" + std::to_string(index) + "]";
}

/// Collects the problems of one file.
class FileProblems {
  public:
    FileProblems(Problems& problems, const std::string& file) : problems_(problems), file_(file) {}

    void add(const std::string& key, const std::string& message) {
        problems_.emplace_back(platform::ErrorKind::Template, message, file_, key);
    }

    template <class Types>
    void requireKnownType(const Value& info, const char* what, const std::string& key) {
        const std::string type = info.string("type");
        if (!info.isDictionary())
            add(key, std::string("is no dictionary of a ") + what);
        else if (type.empty())
            add(key, std::string("the ") + what + " has no \"type\"");
        else if (!Types::find(type))
            add(key + ".type", std::string("unknown ") + what + " type \"" + type + "\"");
    }

    /// What every node may hold, whatever made it.
    void checkNodeContent(const Value& info, const std::string& key) {
        const auto& components = info.array("ComponentsInfo");
        for (size_t i = 0; i < components.size(); ++i)
            requireKnownType<ComponentTypes>(components[i], "component", element(key + ".ComponentsInfo", i));
        checkNodes(info.array("childNode"), key + ".childNode");
        // A camera is built as a node is, with the components and nodes that its dictionary lists.
        if (info.has("CameraInfo")) checkNodeContent(info["CameraInfo"], key + ".CameraInfo");
    }

    void checkNodes(const Value::Array& nodes, const std::string& key) {
        for (size_t i = 0; i < nodes.size(); ++i) checkNode(nodes[i], element(key, i));
    }

    /// Empty entries of the scene's own list are passed over when it is built.
    void checkTopNodes(const Value::Array& nodes, const std::string& key) {
        for (size_t i = 0; i < nodes.size(); ++i)
            if (!nodes[i].dictionary().empty()) checkNode(nodes[i], element(key, i));
    }

    void checkClock(const Value& timeSource) {
        if (timeSource.dictionary().empty())
            return add("TimeSource", "the scene has no clock, so it would never end: add a \"TimeSource\"");
        requireKnownType<TimeSourceTypes>(timeSource, "time source", "TimeSource");
        checkNodeContent(timeSource, "TimeSource");
    }

  private:
    void checkNode(const Value& node, const std::string& key) {
        requireKnownType<NodeTypes>(node, "node", key);
        checkNodeContent(node, key);
    }

    Problems& problems_;
    const std::string& file_;
};

/// Judges the scenes of a group, each catalogue number once.
class GroupProblems {
  public:
    GroupProblems(Problems& problems, const std::string& file, SceneCatalogue& catalogue)
        : problems_(problems), group_(problems, file), catalogue_(catalogue) {}

    void check(const Value& sceneGroup) {
        const auto& scenes = sceneGroup.array("scene");
        if (scenes.empty()) group_.add("scene", "the list of scenes is empty");
        if (scenes.size() > platform::Limits::maxGroupScenes)
            return group_.add(
                "scene", platform::beyondLimit(scenes.size(), "scenes", platform::Limits::maxGroupScenes));
        for (size_t i = 0; i < scenes.size(); ++i) checkEntry(scenes[i], element("scene", i));
    }

  private:
    void checkEntry(const Value& entry, const std::string& key) {
        checkScene(entry.integer("mainSceneId"), key + ".mainSceneId");
        const Value& transition = entry["sceneTansitionsInfo"];
        const int64_t type = transition.integer("sceneTansitionsType");
        const int64_t sceneId = transition.integer("tansitionsSceneId");
        if (sceneId >= 1 && (type == 0 || type == 1))
            checkScene(sceneId, key + ".sceneTansitionsInfo.tansitionsSceneId");
    }

    void checkScene(int64_t sceneId, const std::string& key) {
        const auto record = catalogue_.querySceneWithSid(sceneId);
        if (!record) return group_.add(key, "the catalogue has no scene " + std::to_string(sceneId));
        if (!seen_.insert(record->scenePlistPath).second) return;
        try {
            const auto found =
                SceneValidation::sceneProblems(readSceneFile(record->scenePlistPath), record->scenePlistPath);
            problems_.insert(problems_.end(), found.begin(), found.end());
        } catch (const platform::Error& error) {
            problems_.push_back(error);
        }
    }

    Problems& problems_;
    FileProblems group_;
    SceneCatalogue& catalogue_;
    std::set<std::string> seen_;
};

}  // namespace

Problems SceneValidation::sceneProblems(const Value& scene, const std::string& file) {
    if (auto beyond = sceneBeyondLimits(scene, file)) return {*std::move(beyond)};
    Problems problems;
    FileProblems checked(problems, file);
    checked.checkNodeContent(scene["Camera"], "Camera");
    checked.checkClock(scene["TimeSource"]);
    checked.checkTopNodes(scene.array("object3D"), "object3D");
    return problems;
}

Problems SceneValidation::sceneGroupProblems(const Value& sceneGroup, const std::string& file,
                                             SceneCatalogue& catalogue) {
    Problems problems;
    GroupProblems(problems, file, catalogue).check(sceneGroup);
    return problems;
}

void SceneValidation::requirePlayable(const Value& sceneGroup, const std::string& file,
                                      SceneCatalogue& catalogue) {
    const Problems problems = sceneGroupProblems(sceneGroup, file, catalogue);
    if (!problems.empty()) throw platform::Error(problems.front());
}

}  // namespace multiscene
