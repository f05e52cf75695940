// Keys that are right one by one and together change nothing, or something else than they say.
#include "animation/TransformItemKeys.h"
#include "app/check/SceneRules.h"
#include "core/QVLightBase.h"
#include "core/carmera/QVCamera3D.h"
#include "format/DictionaryWalk.h"
#include "format/NodeTypes.h"
#include "painter/LightUniforms.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

/// One dictionary, and where findings about it go.
class Judged {
  public:
    Judged(const Value& dictionary, const std::string& keyPath, const std::string& file, Findings& findings)
        : content(dictionary), keyPath_(keyPath), file_(file), findings_(findings) {}

    bool has(std::string_view key) const { return content.has(key); }
    void add(Severity severity, const std::string& key, std::string message, std::string remedy) const {
        findings_.push_back({severity, file_, key.empty() ? keyPath_ : keyPath_ + "." + key,
                             std::move(message), std::move(remedy)});
    }

    const Value& content;

  private:
    const std::string& keyPath_;
    const std::string& file_;
    Findings& findings_;
};

/// "endTextureOrigin" sets the texture in motion; what the item does not say of it is 0.
void judgeTextureMotion(const Judged& item) {
    const bool moves = item.has("endTextureOrigin");
    for (const char* key : {"startTextureSize", "endTextureSize"})
        if (moves && !item.has(key))
            item.add(Severity::Error, "endTextureOrigin",
                     "without \"" + std::string(key) + "\" a single point of the texture fills the quad",
                     "add it; \"1,1\" shows all of the texture");
    for (const char* key : {"startTextureOrigin", "startTextureSize", "endTextureSize"})
        if (!moves && item.has(key))
            return item.add(Severity::Warning, key, "has no effect without \"endTextureOrigin\"", "add it");
}

void judgeOverlappingScale(const Judged& item) {
    const auto judge = [&](const char* key, const char* meaning) {
        if (!item.has(key))
            item.add(Severity::Warning, "", "without \"" + std::string(key) + "\" the node " + meaning,
                     "add it; \"1,1,1\" is its own size");
    };
    judge("startScale", "grows from nothing");
    judge("endScale", "shrinks to nothing");
}

void judgeCamera(const Judged& camera) {
    for (const char* key : {"TransformArray", "MutableTransformArray"})
        if (camera.has(key))
            camera.add(Severity::Warning, key, "a camera does not play it", "move it by \"LookAtAnimation\"");
}

void judgeCameraMove(const Judged& move) {
    std::string switches;
    for (const Key& key : lookAtKeys.keys) {
        if (key.type != KeyType::Bool) continue;
        if (move.content.boolean(key.name)) return;
        switches += (switches.empty() ? "\"" : ", \"") + std::string(key.name) + "\"";
    }
    move.add(Severity::Warning, "", "moves nothing", "set one of " + switches);
}

void judgeSpotLight(const Judged& light) {
    const std::string direction = light.content.string("spotLightDirection");
    if (direction.find_first_of("123456789") == std::string::npos)
        light.add(Severity::Warning, direction.empty() ? "" : "spotLightDirection",
                  "a spot light without a direction shines straight ahead, to 0,0,-1",
                  "say where \"spotLightDirection\" points");
}

struct Effect {
    const KeyTable* keys;
    void (*judge)(const Judged&);
};
constexpr Effect effects[] = {{&transformItemKeys, judgeTextureMotion},
                              {&mutableScaleKeys, judgeOverlappingScale},
                              {&cameraKeys, judgeCamera},
                              {&lookAtKeys, judgeCameraMove},
                              {&spotLightKeys, judgeSpotLight}};

class Effects : public DictionaryVisitor {
  public:
    Effects(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        for (const Effect& effect : effects)
            if (keys.has(*effect.keys)) effect.judge({content, keyPath, scene_.file, findings_});
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const size_t count = value.array().size();
        if (key.children == &lightKeys && count > maxLights)
            findings_.push_back({Severity::Warning, scene_.file, keyPath,
                                 "has " + std::to_string(count) + " lights, but only the first " +
                                     std::to_string(maxLights) + " shine",
                                 "remove the others"});
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void keysDoWhatTheySay(const SceneView& scene, Findings& findings) {
    Effects visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void depthTestsReachTheirChildren(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        const Value::Array& children = node.content.array("childNode");
        if (!node.content["FpsInfo"].boolean("isEnableDephTest") || children.size() < 2) continue;
        for (const Value& child : children) {
            if (child["FpsInfo"].boolean("isEnableDephTest")) continue;
            findings.push_back({Severity::Warning, scene.file, node.keyPath + ".FpsInfo.isEnableDephTest",
                                "ends when the first child has been drawn: the others are drawn over "
                                "everything",
                                "give every child an \"isEnableDephTest\" of its own"});
            break;
        }
    }
}

}  // namespace multiscene::rules
