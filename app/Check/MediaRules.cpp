#include <cmath>

#include "app/Check/SceneRules.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/base/FileGate.h"
#include "platform/media/VideoInfo.h"

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

}  // namespace

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
