#include "app/Job/Preflight.h"

#include "app/Check/DictionaryWalk.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "platform/media/VideoInfo.h"
#include "videoRenderCore/SceneFile.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::Value;

namespace {

bool isClockVideo(const std::string& keyPath) { return keyPath.starts_with("TimeSource.VideoInfo."); }

bool isIndispensable(const std::string& keyPath) {
    return isClockVideo(keyPath) || keyPath.ends_with(".customShaderPath");
}

class FilesOfScene : public DictionaryVisitor {
  public:
    explicit FilesOfScene(const SceneConfigData& scene) : scene_(scene) {}

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        if (key.lookup != KeyLookup::Path && key.lookup != KeyLookup::UserPath) return;
        if (value.isString() && !value.stringValue().empty()) judge(key, value.stringValue(), keyPath);
    }

  private:
    void judge(const Key& key, const std::string& text, const std::string& keyPath) const {
        const FileGate::Opened opened =
            FileGate::shared().open(QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(
                text, scene_.sceneResourceFolderPath));
        const bool isMissing = opened.verdict == FileGate::Verdict::Missing;
        if (isMissing && !isIndispensable(keyPath)) return;
        if (opened.verdict != FileGate::Verdict::Allowed)
            throw Error(ErrorKind::Template, "\"" + text + "\" " + describe(opened.verdict),
                        scene_.scenePlistPath, keyPath);
        if (key.file == KeyFile::Video) requireVideo(opened.file, text, keyPath);
    }

    void requireVideo(const platform::FileHandle& file, const std::string& text,
                      const std::string& keyPath) const {
        try {
            platform::probeVideo(file, text);
        } catch (const Error& error) {
            throw Error(error.kind(), "\"" + text + "\": " + error.message(), scene_.scenePlistPath, keyPath);
        }
    }

    const SceneConfigData& scene_;
};

}  // namespace

void requireUsableFiles(const Playable& playable) {
    for (const SceneConfigData& scene : playable.scenes()) {
        FilesOfScene visitor(scene);
        walkDictionary(sceneFileKeys, readSceneFile(scene.scenePlistPath), "", visitor);
    }
}

}  // namespace multiscene
