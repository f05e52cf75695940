#include "3DObject/FTGLTextObject/LetterSettings.h"
#include "animation/LetterAnimation.h"
#include "app/check/SceneRules.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

/// What the keys of letters say together.
class LetterKeys : public DictionaryVisitor {
  public:
    LetterKeys(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (keys.has(letterAnimationKeys)) judgeMotion(content, keyPath);
        if (keys.has(fontInfoKeys) && content.has("smallestFontSize")) judgeShrinking(content, keyPath);
    }

  private:
    void judgeMotion(const Value& item, const std::string& keyPath) {
        const int64_t start = item.integer("sartFps"), end = item.integer("endFps");
        if (end <= start)
            add(Severity::Error, keyPath,
                "frames " + std::to_string(start) + " to " + std::to_string(end) +
                    ": a motion needs at least two frames",
                "let \"endFps\" lie after \"sartFps\"");
    }

    void judgeShrinking(const Value& text, const std::string& keyPath) {
        const KeyReader reader(fontInfoKeys, text);
        if (!(reader.number("lineLength") > 0) && !(reader.number("boxHeight") > 0))
            add(Severity::Warning, keyPath + ".smallestFontSize",
                "has no effect without \"lineLength\" or \"boxHeight\"",
                "say how much room the text has, or remove it");
        if (reader.number("smallestFontSize") > reader.number("fontSize"))
            add(Severity::Error, keyPath + ".smallestFontSize", "is more than \"fontSize\"",
                "letters get smaller from \"fontSize\" on");
    }

    void add(Severity severity, const std::string& keyPath, std::string message, std::string remedy) {
        findings_.push_back({severity, scene_.file, keyPath, std::move(message), std::move(remedy)});
    }

    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void lettersFitTogether(const SceneView& scene, Findings& findings) {
    LetterKeys visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
