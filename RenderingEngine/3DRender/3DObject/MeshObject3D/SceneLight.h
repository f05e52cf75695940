#pragma once

#include "core/QVObject3DTransformBase.h"
#include "painter/Draw.h"

namespace multiscene {

/// Makes a mesh drawn with "normal_lightShader" or its kin lit as its node is: adds the node's place, the eye
/// and the lights that the node takes now. Its normals must face the viewer.
void addSceneLight(MeshDraw& mesh, QVObject3DTransformBase& node);
/// The same for a part of the node that `place` moves within it.
void addSceneLight(MeshDraw& mesh, QVObject3DTransformBase& node, const glm::mat4& place);

}  // namespace multiscene
