#include <cstdlib>
#include <map>

#include "app/Check/DictionaryWalk.h"
#include "app/Check/SceneRules.h"
#include "app/Check/UsedFiles.h"
#include "core/Material/PictureSequence.h"
#include "core/Material/ZBTexture.h"
#include "core/NodeTypes.h"
#include "core/QVObject3DTextureBase.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

/// The key without which a "textureType" shows nothing.
const std::map<std::string, const char*, std::less<>>& indispensableKeys() {
    static const std::map<std::string, const char*, std::less<>> keys{
        {"image", "texture"},     {"filterImage", "texture"},         {"mp4Video", "texture"},
        {"text2d", "textString"}, {"textureSerial", "animationName"}, {"RTTTexture", "textureMapKey"},
    };
    return keys;
}

class Textures : public DictionaryVisitor {
  public:
    Textures(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeyTable&, const Value& content, const std::string& keyPath) override {
        const std::string type = content.string("textureType");
        const auto needed = indispensableKeys().find(type);
        if (needed == indispensableKeys().end() || content.has(needed->second)) return;
        if (content.has("maskTextureName")) return;  // a mask's own word for "texture"
        findings_.push_back(
            {Severity::Error, scene_.file, keyPath,
             "\"" + std::string(needed->second) + "\" is missing, so \"" + type + "\" shows nothing",
             "add it"});
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

class Sequences : public DictionaryVisitor {
  public:
    Sequences(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeyTable& table, const Value& content, const std::string& keyPath) override {
        if (!content.has("animationName")) return;
        const bool isPvr = &table == &pictureSequenceKeys ||
                           content.integer("imageType") == static_cast<int64_t>(ImageType::Pvr);
        const auto require = isPvr ? requirePvr : requirePicture;
        // One frame a picture, so that the first pass meets each of them.
        const PictureSequence sequence(content.with("animationFps", 1));
        const int64_t last = std::abs(content.integer("animationEnd") - content.integer("animationStart"));
        for (int64_t frame = 0; frame <= std::min(last, kMostPictures); ++frame)
            if (!judge(*sequence.animationWithCurrentFps(frame, 0, last), require,
                       keyPath + ".animationName"))
                return;
    }

  private:
    static constexpr int64_t kMostPictures = 10'000;

    bool judge(const std::string& picture, const RequireContent& require, const std::string& keyPath) {
        const Finding place{Severity::Error, scene_.file, keyPath, {}, {}};
        auto finding = judgeFileName(picture, scene_.folder, place);
        if (!finding) finding = judgeFileContent(picture, scene_.folder, require, place);
        if (finding) findings_.push_back(*finding);
        return !finding;
    }

    const SceneView& scene_;
    Findings& findings_;
};

class FontFiles : public DictionaryVisitor {
  public:
    FontFiles(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        if (key.name != "fontName" || !value.stringValue().starts_with("$(")) return;
        if (const auto finding = judgeFileName(value.stringValue(), scene_.folder,
                                               {Severity::Error, scene_.file, keyPath, {}, {}}))
            findings_.push_back(*finding);
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

/// The base of planes and cubes.
constexpr const char* shapelessType = "QVMeshObject3D";

bool isTextured(const std::string& type) {
    const auto* known = NodeTypes::find(type);
    for (const KeyTable* keys = known ? known->keys : nullptr; keys; keys = keys->base)
        if (keys == &textureBaseKeys) return true;
    return false;
}

bool hasSource(const Value& node) {
    return node.has("TextureInfo") || node.has("PvrTextureSerialInfo") || node.has("ColorInfo") ||
           node["FrameInfo"].string("frameType") == "color";
}

Finding withText(Finding place, std::string message, std::string remedy) {
    place.message = std::move(message);
    place.remedy = std::move(remedy);
    return place;
}

template <typename Visitor>
void walk(const SceneView& scene, Findings& findings) {
    Visitor visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace

void nodesShowSomething(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        if (node.content.has("childNode") || !isTextured(node.type)) continue;
        const Finding place{Severity::Warning, scene.file, node.keyPath, {}, {}};
        if (node.type == shapelessType)
            findings.push_back(withText(place, node.label() + " has no surface and draws nothing",
                                        "use QVPlaneObject3D or QVCubeObject3D"));
        else if (!hasSource(node.content))
            findings.push_back(withText(place, node.label() + " has nothing to show", "add \"TextureInfo\""));
    }
}

void texturesSayWhatTheyShow(const SceneView& scene, Findings& findings) { walk<Textures>(scene, findings); }

void sequencesHaveAllPictures(const SceneView& scene, Findings& findings) {
    walk<Sequences>(scene, findings);
}

void fontFilesAreThere(const SceneView& scene, Findings& findings) { walk<FontFiles>(scene, findings); }

}  // namespace multiscene::rules
