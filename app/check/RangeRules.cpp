#include "app/check/SceneRules.h"
#include "core/component/QVObject3DComponentBase.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

std::string frameText(const std::optional<int64_t>& frame) { return std::to_string(frame.value_or(0)); }

bool isEmpty(const FrameRange& range) { return range.start && range.end && *range.start > *range.end; }

/// Nodes and components alike: whatever has "startFps" and "endFps".
class EmptyRanges : public DictionaryVisitor {
  public:
    EmptyRanges(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet&, const Value& content, const std::string& keyPath) override {
        const FrameRange range{frameNumberOf(content["startFps"]), frameNumberOf(content["endFps"])};
        if (!isEmpty(range)) return;
        findings_.push_back({Severity::Error, scene_.file, keyPath,
                             "starts at frame " + frameText(range.start) + " but ends at " +
                                 frameText(range.end) + ": it never happens",
                             "exchange or correct the two"});
    }

  private:
    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void rangesAreNotEmpty(const SceneView& scene, Findings& findings) {
    EmptyRanges visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void nodesBeginBeforeTheSceneEnds(const SceneView& scene, Findings& findings) {
    const auto last = scene.lastFrame();
    if (!last || *last < 0) return;
    for (const NodeView& node : scene.nodes)
        if (node.frames.start.value_or(0) > *last)
            findings.push_back({Severity::Error, scene.file, node.keyPath + ".FpsInfo.startFps",
                                node.label() + " starts at frame " + frameText(node.frames.start) +
                                    ", after the scene's last frame " + std::to_string(*last),
                                "start it earlier or lengthen the clock"});
}

void childrenBeginAfterTheirParents(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        if (node.parent < 0) continue;
        const NodeView& parent = scene.nodes[node.parent];
        if (!node.frames.start || !parent.frames.start || *node.frames.start >= *parent.frames.start)
            continue;
        findings.push_back({Severity::Warning, scene.file, node.keyPath + ".FpsInfo.startFps",
                            node.label() + " starts at frame " + frameText(node.frames.start) +
                                ", before its parent " + parent.label() + " at " +
                                frameText(parent.frames.start) +
                                ": until then it is drawn but does not move, and its texture is not loaded",
                            "start the parent as early as its children"});
    }
}

void childrenBeginBeforeTheirParentsEnd(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        if (node.parent < 0) continue;
        const NodeView& parent = scene.nodes[node.parent];
        if (!node.frames.start || !parent.frames.end || *node.frames.start <= *parent.frames.end) continue;
        findings.push_back({Severity::Error, scene.file, node.keyPath + ".FpsInfo.startFps",
                            node.label() + " starts at frame " + frameText(node.frames.start) +
                                ", after the last frame of its parent " + parent.label() + ", " +
                                frameText(parent.frames.end) + ": it is never drawn",
                            "start it earlier or let the parent last longer"});
    }
}

void componentsBeginBeforeTheSceneEnds(const SceneView& scene, Findings& findings) {
    const auto last = scene.lastFrame();
    if (!last || *last < 0) return;
    for (const NodeView& node : scene.nodes) {
        const Value::Array& components = node.content.array("ComponentsInfo");
        for (size_t index = 0; index < components.size(); ++index) {
            const auto start = frameNumberOf(components[index]["startFps"]);
            if (start.value_or(0) <= *last) continue;
            findings.push_back({Severity::Error, scene.file,
                                node.keyPath + ".ComponentsInfo[" + std::to_string(index) + "].startFps",
                                "starts at frame " + frameText(start) + ", after the scene's last frame " +
                                    std::to_string(*last) + ": it never happens",
                                "start it earlier or lengthen the clock"});
        }
    }
}

// A component is asked only while its node is there, and it starts on its very first frame.
void componentsBeginWhileTheirNodeIsThere(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        const Value::Array& components = node.content.array("ComponentsInfo");
        for (size_t index = 0; index < components.size(); ++index) {
            const auto start = components[index].has("startFps")
                                   ? frameNumberOf(components[index]["startFps"])
                                   : std::optional<int64_t>(0);
            const bool isEarly = start && node.frames.start && *start < *node.frames.start;
            const bool isLate = start && node.frames.end && *start > *node.frames.end;
            if (!isEarly && !isLate) continue;
            findings.push_back({Severity::Error, scene.file,
                                node.keyPath + ".ComponentsInfo[" + std::to_string(index) + "].startFps",
                                "starts at frame " + frameText(start) + ", but " + node.label() +
                                    (isEarly ? " is only there from frame " + frameText(node.frames.start)
                                             : " is only there to frame " + frameText(node.frames.end)) +
                                    ": it never happens",
                                "start it while its node is there"});
        }
    }
}

}  // namespace multiscene::rules
