#include "app/check/KeyJudge.h"
#include "app/check/LookedUpKeys.h"
#include "app/check/SceneRules.h"
#include "core/Material/TextureInfoKeys.h"
#include "format/DictionaryWalk.h"
#include "format/NodeTypes.h"
#include "group/UserFilm.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

bool readsKey(const NodeView& node, std::string_view key) {
    const auto* type = NodeTypes::find(node.type);
    return type && type->keys->find(key);
}

/// A box without width or height has no pixels. A tracked quad takes its corners from the track.
void judgeBox(const Value& node, const std::string& keyPath, const SceneView& scene, Findings& findings) {
    if (node.has("TrackInfo")) return;
    for (const char* box : {"QuadInfo", "MeshInfo"})
        for (const char* side : {"modelWidth", "modelHeight"})
            if (node[box].has(side) && node[box].real(side) == 0)
                findings.push_back({Severity::Error, scene.file, keyPath + "." + box + "." + side,
                                    "is 0, so nothing is drawn", "give the box a size"});
}

class Cameras : public DictionaryVisitor {
  public:
    Cameras(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (!keys.find("OrthWidth") || content.real("OrthWidth") > 0) return;
        findings_.push_back({Severity::Error, scene_.file, keyPath,
                             "a QVOrthCamera without \"OrthWidth\" sees nothing",
                             "add the number of units that the picture is wide"});
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

/// Numbers that may be the user's: a text that is none of his keys reads as 0.
class LookedUpNumbers : public DictionaryVisitor {
  public:
    LookedUpNumbers(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const bool isNumber = key.type == KeyType::Integer || key.type == KeyType::Number;
        const std::string text = value.stringValue();
        if (key.lookup != KeyLookup::UserMap || !isNumber || !value.isString() || isNumberText(text)) return;
        if (text == kUserVideoFrames || scene_.userKeys->contains(text)) return;
        findings_.push_back({Severity::Error, scene_.file, keyPath,
                             "\"" + text + "\" is no number, and no input has that key",
                             "write a number or the key of an input"});
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

void judgeTarget(const NodeView& node, const SceneView& scene, Findings& findings) {
    const Value& info = node.content["FpsInfo"];
    if (!info.boolean("isRenderToTexture")) return;
    for (const char* key : {"textureSize", "textureMapKey"})
        if (info.string(key).empty())
            findings.push_back({Severity::Error, scene.file, node.keyPath + ".FpsInfo",
                                node.label() + " draws into a texture without \"" + key + "\"", "add it"});
}

/// What shows a texture that a node draws.
class ShownTargets : public DictionaryVisitor {
  public:
    ShownTargets(const SceneView& scene, std::set<std::string> drawn, Findings& findings)
        : scene_(scene), drawn_(std::move(drawn)), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        const std::string key = content.string("textureMapKey");
        if (!keys.has(namedTargetKeys) || key.empty() || drawn_.contains(key)) return;
        findings_.push_back({Severity::Error, scene_.file, keyPath + ".textureMapKey",
                             "no node of the scene draws into a texture \"" + key + "\"",
                             "give that node \"isRenderToTexture\" and this \"textureMapKey\""});
    }

  private:
    const SceneView& scene_;
    std::set<std::string> drawn_;
    Findings& findings_;
};

}  // namespace

void boxesHaveASize(const SceneView& scene, Findings& findings) {
    judgeBox(scene.clock(), "TimeSource", scene, findings);
    for (const NodeView& node : scene.nodes) judgeBox(node.content, node.keyPath, scene, findings);
}

void camerasSeeSomething(const SceneView& scene, Findings& findings) {
    Cameras visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void lookedUpNumbersAreInputs(const SceneView& scene, Findings& findings) {
    if (!scene.userKeys) return;  // on its own a scene file does not say which keys the user gives
    LookedUpNumbers visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void renderedTexturesAreThere(const SceneView& scene, Findings& findings) {
    std::set<std::string> drawn;
    for (const NodeView& node : scene.nodes) {
        judgeTarget(node, scene, findings);
        if (node.content["FpsInfo"].boolean("isRenderToTexture"))
            drawn.insert(node.content["FpsInfo"].string("textureMapKey"));
    }
    ShownTargets visitor(scene, std::move(drawn), findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void drawingIsSpecifiedWhole(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        const Value& info = node.content["FpsInfo"];
        for (const char* key : {"srcBlend", "dstBlend"})
            if (info.boolean("isChangeBlend") && !info.has(key))
                findings.push_back({Severity::Error, scene.file, node.keyPath + ".FpsInfo",
                                    "\"isChangeBlend\" without \"" + std::string(key) + "\"", "add it"});
        if (readsKey(node, "CustomShaderInfo") && info.string("customShaderPath").empty())
            findings.push_back({Severity::Warning, scene.file, node.keyPath + ".FpsInfo",
                                node.label() + " has no \"customShaderPath\": its variable changes nothing",
                                "name a shader description"});
    }
}

}  // namespace multiscene::rules
