#include "painter/LightUniforms.h"

#include <algorithm>
#include <cmath>

namespace multiscene {

namespace {

void addLight(const Light& light, const std::string& prefix, Uniforms& uniforms) {
    const auto add = [&](const char* name, const UniformValue& value) {
        uniforms.emplace_back(prefix + name, value);
    };
    add("useLight", static_cast<int>(light.kind));
    add("lightPosition", light.position);
    add("ambientMaterial", light.ambient);
    add("diffuseMaterial", light.diffuse);
    add("specularMaterial", light.specular);
    add("shininess", light.shininess);
    if (light.kind != LightKind::Spot) return;
    add("spotLightExponent", light.spotExponent);
    add("spotLightCutOffAngle", light.spotAngle);
    add("spotLightCutOffCosine", std::cos(light.spotAngle));
    add("spotLightDirection", light.spotDirection);
}

std::string lightDefinitions(std::span<const Light> lights) {
    if (lights.empty()) return "#define UNLIT\n";
    std::string text = "#define LIGHTS";
    for (size_t i = 0; i < std::min(lights.size(), maxLights); ++i)
        text += " LIGHT(" + std::to_string(i) + ", " + std::to_string(static_cast<int>(lights[i].kind)) +
                ", " + (lights[i].specular == glm::vec3(0) ? "false" : "true") + ")";
    return text + "\n";
}

}  // namespace

void addLightUniforms(std::span<const Light> lights, Uniforms& uniforms) {
    for (size_t i = 0; i < lights.size(); ++i)
        addLight(lights[i], "lightSourceArray[" + std::to_string(i) + "].", uniforms);
    uniforms.emplace_back("lightSourceNumber", static_cast<int>(lights.size()));
    uniforms.emplace_back("lightEnable", lights.empty() ? 0 : 1);
}

std::string meshDefinitions(const MeshDraw& mesh) {
    return lightDefinitions(mesh.lights) + (mesh.isSmooth ? "#define SMOOTH\n" : "") +
           (mesh.emissionTexture ? "#define EMISSION_PICTURE\n" : "");
}

}  // namespace multiscene
