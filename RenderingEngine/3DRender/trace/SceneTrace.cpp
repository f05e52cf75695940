#include "trace/SceneTrace.h"

#include <cmath>
#include <glm/gtc/type_ptr.hpp>

#include "core/QVLightBase.h"
#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "core/carmera/QVCamera3D.h"

namespace multiscene {

namespace {

using platform::Value;

Value numbers(const float* values, int count) {
    Value::Array list;
    for (int i = 0; i < count; ++i)
        list.push_back(std::isfinite(values[i]) ? Value(static_cast<double>(values[i])) : Value());
    return Value(std::move(list));
}

Value cameraLine(QVCamera3D& camera) {
    return Value(Value::Dictionary{
        {"projection", numbers(glm::value_ptr(camera.getPpTransform()), 16)},
        {"view", numbers(glm::value_ptr(camera.cameraLookAtTransform()), 16)},
    });
}

Value lightLine(const QVLightBase& light) {
    return Value(Value::Dictionary{
        {"type", Value(static_cast<int>(light.lightSourceType()))},
        {"position", numbers(glm::value_ptr(light.lightSourcePosition()), 3)},
        {"color", numbers(glm::value_ptr(light.lightSourceColor()), 3)},
    });
}

Value nodeLine(QVObjectContainer3D& node, const Value::Array& path, const Value& parent,
               const platform::CMTime& time) {
    Value::Dictionary fields;
    node.addTraceFields(fields);
    fields["path"] = Value(path);
    fields["parent"] = parent;
    if (const auto* ranged = dynamic_cast<const QVObject3DFpsBase*>(&node))
        fields["due"] = Value(ranged->isDueAt(time.value));
    return Value(std::move(fields));
}

/// Tree order: each node before its children.
void addNodes(Value::Array& lines, const QVObjectContainer3D::Children& nodes, const Value::Array& parentPath,
              const platform::CMTime& time) {
    const Value parent = parentPath.empty() ? Value() : Value(parentPath);
    for (size_t i = 0; i < nodes.size(); ++i) {
        Value::Array path = parentPath;
        path.emplace_back(static_cast<int64_t>(i));
        lines.push_back(nodeLine(*nodes[i], path, parent, time));
        addNodes(lines, nodes[i]->children(), path, time);
    }
}

Value sceneLine(const char* slot, const QVScene3D& scene) {
    Value::Array lights, nodes;
    for (const auto& light : scene.lightArray()) lights.push_back(lightLine(*light));
    addNodes(nodes, scene.children(), {}, scene.currentRenderTime());
    return Value(Value::Dictionary{
        {"slot", Value(slot)},
        {"sceneId", Value(scene.sceneConfigData().sId)},
        {"identifier", Value(scene.sceneIdentifier())},
        {"time", Value(scene.currentRenderTime().value)},
        {"camera", scene.camera() ? cameraLine(*scene.camera()) : Value()},
        {"lights", Value(std::move(lights))},
        {"nodes", Value(std::move(nodes))},
    });
}

}  // namespace

platform::Value SceneTrace::frame(const RenderDriver& driver) {
    const SceneRenderType mode = driver.sceneRenderType();
    Value::Array scenes;
    const auto add = [&](const char* slot, const std::shared_ptr<QVScene3D>& scene) {
        if (scene) scenes.push_back(sceneLine(slot, *scene));
    };
    add("current", driver.currentScene());
    if (mode == SceneRenderType::TextureTransition) add("next", driver.nextScene());
    if (mode != SceneRenderType::Single) add("transition", driver.transitionsScene());
    return Value(Value::Dictionary{
        {"frame", Value(driver.currentRenderFps())},
        {"mode", Value(static_cast<int>(mode))},
        {"scenes", Value(std::move(scenes))},
    });
}

}  // namespace multiscene
