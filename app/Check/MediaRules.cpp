#include <cmath>
#include <map>
#include <optional>

#include "app/Check/DictionaryWalk.h"
#include "app/Check/MediaFile.h"
#include "app/Check/SceneRules.h"
#include "other/QVMultiSceneRenderShareSettings.h"
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

/// A video that a key names; none when it cannot be read. A missing file is another rule's.
std::optional<platform::VideoInfo> judgeVideo(const std::string& path, double rate, const std::string& folder,
                                              Finding place, Findings& findings) {
    const auto opened = FileGate::shared().open(
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(path, folder));
    if (opened.verdict != FileGate::Verdict::Allowed) return std::nullopt;
    try {
        const platform::VideoInfo video = platform::probeVideo(opened.file, path);
        judgeRate(video, rate, place, findings);
        return video;
    } catch (const platform::Error& error) {
        place.message = "\"" + path + "\": " + error.message();
        place.remedy = "use an MP4, MOV, WebM, AVI or MPEG-TS file";
        findings.push_back(std::move(place));
        return std::nullopt;
    }
}

/// The keys that name a file of one kind wherever they stand.
std::optional<MediaKind> kindOf(std::string_view key) {
    static const std::map<std::string_view, MediaKind> kinds{{"maskTextureName", MediaKind::Picture},
                                                             {"maskPhotoName", MediaKind::Picture},
                                                             {"audioFilePath", MediaKind::Sound},
                                                             {"trackFliePath", MediaKind::Track}};
    const auto found = kinds.find(key);
    return found == kinds.end() ? std::nullopt : std::optional(found->second);
}

/// Reads every file of the scene but videos; a missing file is another rule's.
class MediaFiles : public DictionaryVisitor {
  public:
    MediaFiles(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeyTable&, const Value& content, const std::string& keyPath) override {
        const std::string type = content.string("textureType");
        if (type == "image" || type == "filterImage") pictureKey_ = keyPath + ".texture";
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const auto kind = keyPath == pictureKey_ ? MediaKind::Picture : kindOf(key.name);
        if (!kind || !value.isString()) return;
        if (const auto finding = judgeMediaFile(*kind, value.stringValue(), scene_.folder,
                                                {Severity::Error, scene_.file, keyPath, {}, {}}))
            findings_.push_back(*finding);
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
    std::string pictureKey_;
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

}  // namespace

void mediaFilesAreReadable(const SceneView& scene, Findings& findings) {
    MediaFiles visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void videosAreReadable(const SceneView& scene, Findings& findings) {
    const Value& info = scene.clock()["VideoInfo"];
    for (const char* key : {"msaterVideoPath", "maskVideoPath"}) {
        if (!info[key].isString()) continue;
        const Finding place{Severity::Error, scene.file, std::string("TimeSource.VideoInfo.") + key, {}, {}};
        if (const auto video =
                judgeVideo(info.string(key), info.real("videoFps"), scene.folder, place, findings))
            judgeLength(*video, scene, place, findings);
    }
    for (const NodeView& node : scene.nodes) {
        const Value& texture = node.content["TextureInfo"];
        if (texture.string("textureType") == "mp4Video")
            judgeVideo(texture.string("texture"), texture.real("videoFps"), scene.folder,
                       {Severity::Error, scene.file, node.keyPath + ".TextureInfo.texture", {}, {}},
                       findings);
    }
}

}  // namespace multiscene::rules
