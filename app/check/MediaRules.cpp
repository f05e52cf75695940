#include <cmath>
#include <optional>

#include "app/check/MediaReader.h"
#include "app/check/SceneRules.h"
#include "format/DictionaryWalk.h"
#include "platform/media/VideoInfo.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

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

std::optional<MediaKind> kindOf(KeyFile file) {
    switch (file) {
        case KeyFile::Picture:
            return MediaKind::Picture;
        case KeyFile::Sound:
            return MediaKind::Sound;
        case KeyFile::Track:
            return MediaKind::Track;
        case KeyFile::ColorTable:
            return MediaKind::ColorTable;
        case KeyFile::Mesh:
            return MediaKind::Mesh;
        default:
            return std::nullopt;
    }
}

/// Reads every file of the scene but videos; a missing file is another rule's.
class MediaFiles : public DictionaryVisitor {
  public:
    MediaFiles(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const auto kind = kindOf(key.file);
        if (!kind || !value.isString()) return;
        if (const auto finding = scene_.media->judge(*kind, value.stringValue(), scene_.folder,
                                                     {Severity::Error, scene_.file, keyPath, {}, {}}))
            findings_.push_back(*finding);
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

/// A clock plays its video from frame 0 to "endFps", a picture a frame.
void judgeLength(const platform::VideoInfo& video, const SceneView& scene, Finding place,
                 Findings& findings) {
    const auto last = scene.lastFrame();
    if (!last || video.frameCount == 0 || *last < video.frameCount) return;
    place.severity = Severity::Warning;
    place.message = "the video has " + std::to_string(video.frameCount) +
                    " pictures, but the clock's last frame is " + std::to_string(*last);
    place.remedy = "use a longer video or set \"endFps\" to " + std::to_string(video.frameCount - 1);
    findings.push_back(std::move(place));
}

/// Reads every video, each at the rate that its dictionary gives it.
class Videos : public DictionaryVisitor {
  public:
    Videos(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        for (const std::string_view name : keys.names()) judge(keys, name, content, keyPath);
    }

  private:
    void judge(const KeySet& keys, std::string_view name, const Value& content, const std::string& keyPath) {
        if (keys.fileOf(*keys.find(name)) != KeyFile::Video || !content[name].isString()) return;
        const Finding place{Severity::Error, scene_.file, keyPath + "." + std::string(name), {}, {}};
        const std::string path = content.string(name);
        if (auto finding = scene_.media->judge(MediaKind::Video, path, scene_.folder, place)) {
            finding->remedy = "use an MP4, MOV, WebM, AVI or MPEG-TS file";
            findings_.push_back(*finding);
        }
        const auto video = scene_.media->film(path, scene_.folder);
        if (!video) return;
        judgeRate(*video, content.real("videoFps"), place, findings_);
        if (keyPath.starts_with("TimeSource.")) judgeLength(*video, scene_, place, findings_);
    }

    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void mediaFilesAreReadable(const SceneView& scene, Findings& findings) {
    MediaFiles visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void videosAreReadable(const SceneView& scene, Findings& findings) {
    Videos visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
