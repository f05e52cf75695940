#include "app/check/SceneRules.h"

namespace multiscene::rules {

using platform::Value;

void clockSaysItsEnd(const SceneView& scene, Findings& findings) {
    if (!scene.clock().isDictionary() || scene.clock()["FpsInfo"].has("endFps")) return;
    findings.push_back({Severity::Warning, scene.file, "TimeSource.FpsInfo",
                        "the clock has no \"endFps\": how long the scene lasts is left to chance",
                        "add the number of the last frame"});
}

void clockBeginsAtZero(const SceneView& scene, Findings& findings) {
    const Value& start = scene.clock()["FpsInfo"]["startFps"];
    if (start.isNone() || frameNumberOf(start).value_or(0) == 0) return;
    findings.push_back({Severity::Warning, scene.file, "TimeSource.FpsInfo.startFps",
                        "a clock runs from frame 0; before \"startFps\" nothing follows or ends the scene",
                        "set it to 0"});
}

void backgroundIsStretched(const SceneView& scene, Findings& findings) {
    const Value& box = scene.clock()["QuadInfo"];
    for (const char* key : {"quadObject3DContentMode", "backgroundRenderMode"})
        if (box.integer(key) != 0)
            findings.push_back({Severity::Warning, scene.file, std::string("TimeSource.QuadInfo.") + key,
                                "a background video is always stretched to its box",
                                "remove the key and give the box the video's shape"});
}

}  // namespace multiscene::rules
