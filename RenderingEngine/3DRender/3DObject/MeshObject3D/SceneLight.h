#pragma once

#include "core/QVObject3DTransformBase.h"
#include "opengl2.0/Shader.h"

namespace multiscene {

/// "normal_lightShader" or its kin of this name, made for the lights that the node takes now. Its normals
/// must face the viewer.
std::shared_ptr<Shader> shaderForSceneLight(const std::string& name, const QVObject3DTransformBase& node);

/// Sets what such a shader takes besides texture and projection: the node's place, the eye,
/// and the lights where the node is lit. The shader must be in use.
void setSceneLight(Shader& shader, QVObject3DTransformBase& node);

}  // namespace multiscene
