#include "3DObject/MeshObject3D/SceneLight.h"

#include "core/QVLightBase.h"
#include "core/QVScene3D.h"
#include "core/carmera/QVCamera3D.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"

namespace multiscene {

std::shared_ptr<Shader> shaderForSceneLight(const std::string& name, const QVObject3DTransformBase& node) {
    return ShaderManager::sharedManager().createShaderWithDefinitions(
        name, name + ".plist",
        QVLightBase::definitionsForLightArray(node.ligthArray(), node.isLightEnable()));
}

void setSceneLight(Shader& shader, QVObject3DTransformBase& node) {
    const glm::mat4 model = node.sceneTransform();
    const glm::mat4 normals(glm::transpose(glm::inverse(glm::mat3(model))));
    const auto scene = node.scene();
    const auto view = node.camera() ? node.camera() : scene ? scene->camera() : nullptr;
    const glm::vec3 eye = view ? glm::vec3(glm::inverse(view->cameraLookAtTransform())[3]) : glm::vec3(0);
    shader.setUniform("u_modelMatrix", model);
    shader.setUniform("u_normalMatrix", normals);
    shader.setUniform("u_eyePosition", eye);
    QVLightBase::glslLightParamWithLightArray(node.ligthArray(), shader, node.isLightEnable());
}

}  // namespace multiscene
