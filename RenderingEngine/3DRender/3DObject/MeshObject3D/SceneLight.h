#pragma once

#include "core/QVObject3DTransformBase.h"
#include "opengl2.0/Shader.h"

namespace multiscene {

/// Sets what "normal_lightShader" and its kin take besides texture and projection: the node's place, the eye,
/// and the lights where the node is lit. The shader must be in use.
void setSceneLight(Shader& shader, QVObject3DTransformBase& node);

}  // namespace multiscene
