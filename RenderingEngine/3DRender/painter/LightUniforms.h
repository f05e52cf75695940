// Lights as the shader of lit surfaces, and templates' shaders, take them.
#pragma once

#include <span>
#include <string>

#include "painter/Draw.h"
#include "platform/base/Limits.h"

namespace multiscene {

/// As many the shader adds up; further ones are left out.
inline constexpr size_t maxLights = platform::limitOf<size_t>("maxLights");

/// Adds what a lit program takes of all lights; those of none where there are none.
void addLightUniforms(std::span<const Light> lights, Uniforms& uniforms);

/// The definitions that make "normal_lightShader" and its kin fit a draw.
std::string meshDefinitions(const MeshDraw& mesh);

}  // namespace multiscene
