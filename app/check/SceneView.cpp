#include "app/check/SceneView.h"

#include <limits>

#include "platform/base/Saturating.h"

namespace multiscene {

using platform::Value;

namespace {

FrameRange frameRangeOf(const Value& fpsInfo) {
    FrameRange range;
    range.start = fpsInfo.has("startFps") ? frameNumberOf(fpsInfo["startFps"]) : 0;
    range.end = fpsInfo.has("endFps") ? frameNumberOf(fpsInfo["endFps"])
                                      : std::optional(std::numeric_limits<int64_t>::max());
    return range;
}

void addNodes(const Value& list, const std::string& keyPath, int parent, std::vector<NodeView>& nodes) {
    const Value::Array& elements = list.array();
    for (size_t index = 0; index < elements.size(); ++index) {
        const Value& content = elements[index];
        if (!content.isDictionary()) continue;
        const std::string path = keyPath + "[" + std::to_string(index) + "]";
        nodes.push_back({content, content.string("type"), path, frameRangeOf(content["FpsInfo"]), parent});
        addNodes(content["childNode"], path + ".childNode", static_cast<int>(nodes.size()) - 1, nodes);
    }
}

}  // namespace

std::string NodeView::label() const {
    const std::string name = content.string("name");
    return name.empty() ? type : "\"" + name + "\" (" + type + ")";
}

std::optional<int64_t> SceneView::lastFrame() const {
    const Value& range = clock()["FpsInfo"];
    if (range.has("endFps")) return frameNumberOf(range["endFps"]);
    return frameNumberOf(clock()["NullVideoInfo"]["fpsTotal"]);
}

SceneView sceneViewOf(const std::string& file, const std::string& folder, Value content) {
    SceneView view{file, folder, std::move(content), {}, std::nullopt, nullptr};
    addNodes(view.content["object3D"], "object3D", -1, view.nodes);
    return view;
}

int64_t framesTo(int64_t lastFrame) { return platform::saturatingSum(lastFrame, 1); }

std::optional<int64_t> frameNumberOf(const Value& value) {
    if (value.isNumber()) return value.integerValue();
    const std::string text = value.stringValue();
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::optional(value.integerValue()) : std::nullopt;
}

}  // namespace multiscene
