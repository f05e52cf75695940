#include <algorithm>
#include <limits>

#include "animation/TransformItemKeys.h"
#include "app/check/SceneRules.h"
#include "core/carmera/QVCamera3D.h"
#include "tween/Ease.h"

namespace multiscene::rules {

using platform::Value;

namespace {

/// Depths, in model units. Where a motion cannot be followed from the file alone, all of them.
struct Depths {
    float least = 0, most = 0;

    static Depths all() {
        constexpr float endless = std::numeric_limits<float>::infinity();
        return {-endless, endless};
    }
    void take(float depth) {
        least = std::min(least, depth);
        most = std::max(most, depth);
    }
};

/// What a camera sees that looks along -z from the origin; everything where it moves.
Depths seenBy(const Value& camera) {
    if (!camera.array("LookAtAnimation").empty()) return Depths::all();
    if (camera.string("type") == "QVOrthCamera")
        return {-QVCamera3D::defaultOrthFar, -QVCamera3D::defaultOrthNear};
    return {-QVCamera3D::defaultFar, -QVCamera3D::defaultNear};
}

/// Turned out of the picture's plane, or scaled in depth: then the depth of what it holds is another.
bool changesDepths(const KeyReader& item) {
    for (const char* key : {"startRotate", "endRotate"}) {
        const glm::vec3 angles = item.vector3(key);
        if (angles.x != 0 || angles.y != 0) return true;
    }
    for (const char* key : {"startScale", "endScale"})
        if (item.has(key) && item.vector3(key).z != 1) return true;
    return false;
}

/// Where a node's own motion takes it.
Depths movedTo(const NodeView& node) {
    if (node.content.has("MutableTransformArray")) return Depths::all();
    const Value::Array& items = node.content.array("TransformArray");
    if (items.empty()) return {};
    Depths depths{std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest()};
    const KeyReader first(transformItemKeys, items.front());
    if (!first.has("startTranslate") || first.integer("sartFps") > node.frames.start.value_or(0))
        depths.take(0);
    for (const Value& content : items) {
        const KeyReader item(transformItemKeys, content);
        const float end = item.vector3("endTranslate").z;
        if (changesDepths(item) || end >= static_cast<float>(firstBezierEase)) return Depths::all();
        if (item.has("startTranslate")) depths.take(item.vector3("startTranslate").z);
        if (item.has("endTranslate")) depths.take(end);
    }
    return depths;
}

/// The box of a node with a surface, around its place; nothing for a node without one.
std::optional<Depths> boxOf(const Value& node) {
    const bool isMesh = node.has("MeshInfo");
    if (!isMesh && !node.has("QuadInfo")) return std::nullopt;
    const Value& box = node[isMesh ? "MeshInfo" : "QuadInfo"];
    const float middle = box.real("anchorZ"), half = isMesh ? box.real("modelDepth") / 2 : 0;
    return Depths{middle - half, middle + half};
}

Depths operator+(const Depths& one, const Depths& other) {
    return {one.least + other.least, one.most + other.most};
}

std::string depthText(float depth) { return Value(static_cast<double>(depth)).stringValue(); }

struct Placed {
    Depths lies, seen;
};

Placed placed(const NodeView& node, const Placed& parent) {
    const Value& camera = node.content["CameraInfo"];
    return {parent.lies + movedTo(node), camera.isDictionary() ? seenBy(camera) : parent.seen};
}

}  // namespace

void nodesLieWhereTheCameraSees(const SceneView& scene, Findings& findings) {
    const Placed whole{{}, seenBy(scene.content["Camera"])};
    std::vector<Placed> places;  // as scene.nodes
    for (const NodeView& node : scene.nodes) {
        const Placed place = placed(node, node.parent < 0 ? whole : places[static_cast<size_t>(node.parent)]);
        places.push_back(place);
        const auto box = boxOf(node.content);
        if (!box) continue;
        const Depths lies = place.lies + *box;
        const bool isBehind = lies.most<place.seen.least, isBefore = lies.least> place.seen.most;
        if (isBehind || isBefore)
            findings.push_back({Severity::Error, scene.file, node.keyPath,
                                node.label() + " lies at z " + depthText(isBehind ? lies.most : lies.least) +
                                    ", but the camera sees z from " + depthText(place.seen.least) + " to " +
                                    depthText(place.seen.most) + ": it is never drawn",
                                "move it with \"TransformArray\""});
    }
}

}  // namespace multiscene::rules
