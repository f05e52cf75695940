#include "opengl2.0/QVMultiSceneRenderShader.h"

#include "opengl2.0/ShaderManager/ShaderManager.h"

namespace multiscene {

QVMultiSceneRenderShader::QVMultiSceneRenderShader(std::string shaderKey, const std::string& shaderPath)
    : shaderKey_(std::move(shaderKey)) {
    ShaderManager::sharedManager().createShader(shaderKey_, shaderPath);
}

void QVMultiSceneRenderShader::useShader() { ShaderManager::sharedManager().useShader(shaderKey_); }

std::shared_ptr<Shader> QVMultiSceneRenderShader::shader() const {
    return ShaderManager::sharedManager().shaderForName(shaderKey_);
}

int QVMultiSceneRenderShader::uniform(const char* name) const {
    const auto found = shader();
    return found ? found->uniformLocation(name) : 0;
}

unsigned int QVMultiSceneRenderShader::attribute(const char* name) const {
    const auto found = shader();
    return found ? found->attributeHandle(name) : 0;
}

}  // namespace multiscene
