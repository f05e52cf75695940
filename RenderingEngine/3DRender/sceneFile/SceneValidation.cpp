#include "sceneFile/SceneValidation.h"

#include <set>

#include "core/component/QVObject3DComponentBase.h"
#include "format/NodeTypes.h"
#include "platform/base/Limits.h"
#include "playback/VideoTimeSource.h"
#include "sceneFile/SceneLimits.h"

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

/// Judges the scenes of a group, each file once.
class GroupProblems {
  public:
    GroupProblems(Problems& problems, const std::string& file, const SceneGroup& group)
        : problems_(problems), file_(problems, file), group_(group) {}

    void check() {
        const auto& entries = group_.entries;
        if (entries.empty()) file_.add("scene", "the list of scenes is empty");
        if (entries.size() > platform::limitOf("maxGroupScenes"))
            return file_.add("scene", platform::beyondLimit(entries.size(), "scenes",
                                                            platform::limitOf("maxGroupScenes")));
        for (size_t i = 0; i < entries.size(); ++i) checkEntry(entries[i], element("scene", i));
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
        const SceneGroup::Scene* scene = group_.scene(sceneId);
        if (!scene) return file_.add(key, "the catalogue has no scene " + std::to_string(sceneId));
        const std::string& path = scene->record.scenePlistPath;
        if (!seen_.insert(path).second) return;
        if (scene->fault) return problems_.push_back(*scene->fault);
        const auto found = SceneValidation::sceneProblems(scene->content, path);
        problems_.insert(problems_.end(), found.begin(), found.end());
    }

    Problems& problems_;
    FileProblems file_;
    const SceneGroup& group_;
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

Problems SceneValidation::sceneGroupProblems(const SceneGroup& group, const std::string& file) {
    Problems problems;
    GroupProblems(problems, file, group).check();
    return problems;
}

void SceneValidation::requirePlayable(const SceneGroup& group, const std::string& file) {
    const Problems problems = sceneGroupProblems(group, file);
    if (!problems.empty()) throw platform::Error(problems.front());
}

}  // namespace multiscene
