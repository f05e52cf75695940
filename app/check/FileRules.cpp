#include "app/check/SceneRules.h"
#include "app/check/UsedFiles.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::FileGate;

namespace {

/// Names of numbered pictures are completed with a number: they name no file by themselves.
bool isCompletedLater(const std::string& keyPath) { return keyPath.ends_with(".animationName"); }

class FileNames : public DictionaryVisitor {
  public:
    FileNames(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const platform::Value& value, const std::string& keyPath) override {
        const bool mayBeUserKey = key.lookup == KeyLookup::UserPath;
        if ((key.lookup != KeyLookup::Path && !mayBeUserKey) || !value.isString()) return;
        const std::string text = value.stringValue();
        if (text.empty() || isCompletedLater(keyPath)) return;
        if (mayBeUserKey && isUserKey(text)) return;
        if (auto finding = judgeFileName(scene_.media->playback(), text, scene_.folder,
                                         {Severity::Error, scene_.file, keyPath, {}, {}}))
            findings_.push_back(*finding);
    }

  private:
    bool isUserKey(const std::string& text) const {
        // On its own a scene file does not say which keys the user gives: a plain word may be one.
        if (!scene_.userKeys) return text.find('/') == std::string::npos;
        return scene_.userKeys->contains(text);
    }

    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void filesAreThere(const SceneView& scene, Findings& findings) {
    FileNames visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
