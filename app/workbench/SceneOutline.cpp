#include "app/workbench/SceneOutline.h"

#include <array>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <string>

#include "app/check/SceneView.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Value;

namespace {

// The format spells them in more than one way.
constexpr std::array kFirstKeys{"sartFps", "startFps", "fpsStart"};
constexpr std::array kLastKeys{"endFps", "fpsEnd"};

Value frameUnder(const Value& content, const auto& names) {
    for (const char* name : names)
        if (const auto frame = content.has(name) ? frameNumberOf(content[name]) : std::nullopt) return *frame;
    return {};
}

/// Finds what says within nodes when it happens: motions, operators, components, effects.
class FrameKeys : public DictionaryVisitor {
  public:
    void dictionary(const KeySet&, const Value& content, const std::string& keyPath) override {
        const std::string node = nodeOf(keyPath);
        if (node.empty() || keyPath == node || keyPath == node + ".FpsInfo") return;
        const Value first = frameUnder(content, kFirstKeys), last = frameUnder(content, kLastKeys);
        if (!first && !last) return;
        found_[node].push_back(Value::Dictionary{
            {"key", keyPath}, {"first", first ? first : Value(int64_t{0})}, {"last", last ? last : first}});
    }

    Value of(const std::string& node) const {
        const auto found = found_.find(node);
        return found == found_.end() ? Value::Array() : found->second;
    }

  private:
    /// "object3D[1].childNode[0]" of "object3D[1].childNode[0].AnimationInfo[2]"; empty: it is in no node.
    static std::string nodeOf(const std::string& keyPath) {
        if (!keyPath.starts_with("object3D[")) return {};
        size_t end = keyPath.find(']') + 1;
        while (keyPath.compare(end, 11, ".childNode[") == 0) end = keyPath.find(']', end) + 1;
        return keyPath.substr(0, end);
    }

    std::map<std::string, Value::Array> found_;
};

Value frameOf(const std::optional<int64_t>& frame) {
    const bool isKnown = frame && *frame != std::numeric_limits<int64_t>::max();
    return isKnown ? Value(*frame) : Value();
}

Value::Array nodesOf(const SceneView& scene) {
    FrameKeys keys;
    walkDictionary(sceneFileKeys, scene.content, "", keys);
    Value::Array nodes;
    for (const NodeView& node : scene.nodes)
        nodes.push_back(Value::Dictionary{{"key", node.keyPath},
                                          {"type", node.type},
                                          {"name", node.content.string("name")},
                                          {"parent", node.parent},
                                          {"first", frameOf(node.frames.start)},
                                          {"last", frameOf(node.frames.end)},
                                          {"keys", keys.of(node.keyPath)}});
    return nodes;
}

/// As an author calls it: from the template's folder.
std::string shownPath(const fs::path& file, const fs::path& folder) {
    const fs::path relative = file.lexically_normal().lexically_relative(folder.lexically_normal());
    return relative.empty() || *relative.begin() == ".." ? file.string() : relative.string();
}

class Outline {
  public:
    explicit Outline(const PreparedGroup& group) : group_(group) {}

    Value value() {
        const auto turns = group_.group.turns();
        for (size_t index = 0; index < turns.size(); ++index) {
            const Value& entry = group_.group.entries[index];
            add("scene", entry.integer("mainSceneId"), entry.string("sceneIdentifier"), turns[index]);
            addTransition(entry["sceneTansitionsInfo"], turns[index]);
        }
        return Value::Dictionary{{"scenes", std::move(scenes_)}, {"inputs", inputs()}};
    }

  private:
    void addTransition(const Value& info, const SceneGroup::Turn& turn) {
        const int64_t frames = info.integer("fpsTotal");
        if (info.integer("tansitionsSceneId") < 1 || info.integer("sceneTansitionsType") > 1) return;
        add("transition", info.integer("tansitionsSceneId"), "", {turn.start + turn.frames - frames, frames});
    }

    void add(const char* kind, int64_t number, const std::string& identifier, const SceneGroup::Turn& turn) {
        const SceneGroup::Scene* scene = group_.group.scene(number);
        if (!scene) return;
        const SceneConfigData& record = scene->record;
        scenes_.push_back(
            Value::Dictionary{{"kind", kind},
                              {"number", number},
                              {"name", record.sceneName},
                              {"identifier", identifier},
                              {"file", shownPath(record.scenePlistPath, group_.playable.folder)},
                              {"start", turn.start},
                              {"frames", turn.frames},
                              {"nodes", nodesOf(sceneViewOf(record.scenePlistPath, "", scene->content))}});
    }

    Value::Array inputs() const {
        Value::Array list;
        for (const auto& input : group_.playable.inputs) {
            const int64_t type = input->userInputType();
            list.push_back(Value::Dictionary{{"key", input->renderMapKey()},
                                             {"kind", type == 0   ? "text"
                                                      : type == 1 ? "photo"
                                                                  : "video"},
                                             {"labels", input->placeholders()}});
        }
        return list;
    }

    const PreparedGroup& group_;
    Value::Array scenes_;
};

}  // namespace

Value outlineOf(const PreparedGroup& group) { return Outline(group).value(); }

}  // namespace multiscene
