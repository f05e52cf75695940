#include <cmath>

#include "app/Check/DictionaryWalk.h"
#include "app/Check/SceneRules.h"
#include "app/Check/UsedFiles.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/audio/AudioFile.h"
#include "platform/base/FileGate.h"
#include "platform/media/VideoInfo.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene::rules {

using platform::FileGate;
using platform::Value;

namespace {

constexpr double kRateTolerance = 0.01;  // frames a second: 29.97 is not 30

std::string rateText(double rate) {
    const std::string text = Value(std::round(rate * 1000) / 1000).stringValue();
    return text + " frames a second";
}

void judgeRate(const platform::VideoInfo& video, double wanted, Finding place, Findings& findings) {
    if (video.averageFrameRate <= 0 || std::abs(video.averageFrameRate - wanted) < kRateTolerance) return;
    place.severity = Severity::Warning;
    place.message = "the video has " + rateText(video.averageFrameRate) + " but is played at " +
                    rateText(wanted) + ", a picture a frame";
    place.remedy = "convert the video or correct \"videoFps\"";
    findings.push_back(std::move(place));
}

/// A video that a key names; a missing file is another rule's.
void judgeVideo(const std::string& path, double rate, const std::string& folder, Finding place,
                Findings& findings) {
    const auto opened = FileGate::shared().open(
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(path, folder));
    if (opened.verdict != FileGate::Verdict::Allowed) return;
    try {
        judgeRate(platform::probeVideo(opened.file, path), rate, place, findings);
    } catch (const platform::Error& error) {
        place.message = "\"" + path + "\": " + error.message();
        place.remedy = "use an MP4, MOV, WebM, AVI or MPEG-TS file";
        findings.push_back(std::move(place));
    }
}

/// Opens a file of the template as what its key wants it to be; a missing file is another rule's.
class MediaFiles : public DictionaryVisitor {
  public:
    MediaFiles(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeyTable&, const Value& content, const std::string& keyPath) override {
        const std::string type = content.string("textureType");
        if (type == "image" || type == "filterImage") pictureKey_ = keyPath + ".texture";
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        if (!value.isString()) return;
        if (keyPath == pictureKey_) judge(value.stringValue(), keyPath, requirePicture);
        if (key.name == "audioFilePath") judge(value.stringValue(), keyPath, requireSound);
    }

  private:
    static void requireSound(platform::FileHandle file, const std::string& name) {
        const platform::AudioFile sound(std::move(file), name);
    }

    void judge(const std::string& path, const std::string& keyPath, const RequireContent& require) {
        if (const auto finding = judgeFileContent(path, scene_.folder, require,
                                                  {Severity::Error, scene_.file, keyPath, {}, {}}))
            findings_.push_back(*finding);
    }

    const SceneView& scene_;
    Findings& findings_;
    std::string pictureKey_;
};

}  // namespace

void picturesAndSoundsAreReadable(const SceneView& scene, Findings& findings) {
    MediaFiles visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void videosAreReadable(const SceneView& scene, Findings& findings) {
    const Value& info = scene.clock()["VideoInfo"];
    for (const char* key : {"msaterVideoPath", "maskVideoPath"})
        if (info[key].isString())
            judgeVideo(info.string(key), info.real("videoFps"), scene.folder,
                       {Severity::Error, scene.file, std::string("TimeSource.VideoInfo.") + key, {}, {}},
                       findings);
    for (const NodeView& node : scene.nodes) {
        const Value& texture = node.content["TextureInfo"];
        if (texture.string("textureType") == "mp4Video")
            judgeVideo(texture.string("texture"), texture.real("videoFps"), scene.folder,
                       {Severity::Error, scene.file, node.keyPath + ".TextureInfo.texture", {}, {}},
                       findings);
    }
}

}  // namespace multiscene::rules
