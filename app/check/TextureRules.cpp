#include <cstdlib>

#include "app/check/MediaReader.h"
#include "app/check/SceneRules.h"
#include "app/check/UsedFiles.h"
#include "core/Material/PictureSequence.h"
#include "core/Material/ZBTexture.h"
#include "core/QVObject3DTextureBase.h"
#include "format/DictionaryWalk.h"
#include "format/NodeTypes.h"
#include "platform/base/Limits.h"
#include "platform/text/TextRasterizer.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

class Sequences : public DictionaryVisitor {
  public:
    Sequences(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (!keys.has(pictureSequenceKeys) || !content.has("animationName")) return;
        const bool isPvr =
            !keys.find("imageType") || content.integer("imageType") == static_cast<int64_t>(ImageType::Pvr);
        const MediaKind kind = isPvr ? MediaKind::PvrPicture : MediaKind::Picture;
        // One frame a picture, so that the first pass meets each of them.
        const PictureSequence sequence(content.with("animationFps", 1));
        const int64_t last =
            std::abs(int64_t{content.int32("animationEnd")} - int64_t{content.int32("animationStart")});
        for (int64_t frame = 0; frame <= std::min(last, kMostPictures - 1); ++frame)
            if (!judge(*sequence.animationWithCurrentFps(frame, 0, last), kind, keyPath + ".animationName"))
                return;
    }

  private:
    static constexpr int64_t kMostPictures = platform::limitOf<int64_t>("maxSequencePictures");

    bool judge(const std::string& picture, MediaKind kind, const std::string& keyPath) {
        const Finding place{Severity::Error, scene_.file, keyPath, {}, {}};
        auto finding = judgeFileName(scene_.media->playback(), picture, scene_.folder, place);
        if (finding) finding->remedy = "add the picture or correct the numbers";
        if (!finding) finding = scene_.media->judge(kind, picture, scene_.folder, place);
        if (finding) findings_.push_back(*finding);
        return !finding;
    }

    const SceneView& scene_;
    Findings& findings_;
};

class Fonts : public DictionaryVisitor {
  public:
    Fonts(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const std::string font = value.stringValue();
        if (key.name != "fontName" || font.empty()) return;
        const Finding place{Severity::Error, scene_.file, keyPath, {}, {}};
        if (!font.starts_with("$(")) return judgeFamily(font, place);
        if (const auto finding = judgeFileName(scene_.media->playback(), font, scene_.folder, place))
            findings_.push_back(*finding);
    }

  private:
    void judgeFamily(const std::string& font, Finding place) {
        if (platform::isFontInstalled(font)) return;
        place.severity = Severity::Warning;
        place.message = "the font \"" + font + "\" is not installed here: another one takes its place";
        place.remedy = "install it, or bring a font file and write \"$(currentScenePlistROOT)/…\"";
        findings_.push_back(std::move(place));
    }

    const SceneView& scene_;
    Findings& findings_;
};

bool isTextured(const std::string& type) {
    const auto* known = NodeTypes::find(type);
    for (const KeyTable* keys = known ? known->keys : nullptr; keys; keys = keys->base)
        if (keys == &textureBaseKeys) return true;
    return false;
}

bool hasSource(const Value& node) {
    return node.has("TextureInfo") || node.has("PvrTextureSerialInfo") || node.has("ColorInfo") ||
           node.has("MeshFileInfo") || node["FrameInfo"].string("frameType") == "color";
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
        if (!hasSource(node.content))
            findings.push_back({Severity::Warning, scene.file, node.keyPath,
                                node.label() + " has nothing to show", "add \"TextureInfo\""});
    }
}

void sequencesHaveAllPictures(const SceneView& scene, Findings& findings) {
    walk<Sequences>(scene, findings);
}

void fontsAreThere(const SceneView& scene, Findings& findings) { walk<Fonts>(scene, findings); }

}  // namespace multiscene::rules
