#include "3DObject/MeshObject3D/SceneLight.h"

#include "core/QVLightBase.h"
#include "core/QVScene3D.h"
#include "core/carmera/QVCamera3D.h"

namespace multiscene {

void addSceneLight(MeshDraw& mesh, QVObject3DTransformBase& node) { addSceneLight(mesh, node, glm::mat4(1)); }

void addSceneLight(MeshDraw& mesh, QVObject3DTransformBase& node, const glm::mat4& place) {
    const glm::mat4 model = node.sceneTransform() * place;
    const auto scene = node.scene();
    const auto view = node.camera() ? node.camera() : scene ? scene->camera() : nullptr;
    mesh.modelMatrix = model;
    mesh.normalMatrix = glm::mat4(glm::transpose(glm::inverse(glm::mat3(model))));
    mesh.eye = view ? view->viewpoint() : glm::vec3(0);
    mesh.lights = QVLightBase::lightsWithLightArray(node.ligthArray(), node.isLightEnable());
}

}  // namespace multiscene
