#include "3DObject/QuadObject3D/BackgroundBlur.h"

#include "core/GLESUtils/GLState.h"
#include "opengl2.0/QVObject3DShaderCreater.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"

namespace multiscene {

namespace {

constexpr const char* blurShaderName = "gaussianBlur_renderShader";
constexpr unsigned int radius = 8;  // texels
constexpr double sigma = 16.0;

std::shared_ptr<Shader> blurShader() {
    ShaderManager& manager = ShaderManager::sharedManager();
    if (auto known = manager.shaderForName(blurShaderName)) return known;
    return manager.createShaderWithVertex(
        *QVObject3DShaderCreater::vertexShaderForOptimizedBlurOfRadius(radius, sigma),
        *QVObject3DShaderCreater::fragmentShaderForOptimizedBlurOfRadius(radius, sigma),
        {"position", "inputTextureCoordinate"},
        {"u_textureMatrix", "u_mvpMatrix", "videoFrame", "texelWidthOffset", "texelHeightOffset"},
        blurShaderName);
}

}  // namespace

BackgroundBlur::BackgroundBlur(const TextureSize& pictureSize, bool isPremultiplied)
    : shader_(blurShader()), blendsPremultiplied_(isPremultiplied && GLState::canBlendPremultiplied()) {
    shader_->useShader();
    shader_->setUniform("texelWidthOffset", static_cast<float>(2 / pictureSize.width));
    shader_->setUniform("texelHeightOffset", static_cast<float>(2 / pictureSize.height));
    // The blur cannot divide by alpha after mixing texels, so its colours are blended as they are.
    if (blendsPremultiplied_) GLState::announceColors(SourceColors::Premultiplied);
}

BackgroundBlur::~BackgroundBlur() {
    if (blendsPremultiplied_) GLState::announceColors(SourceColors::Straight);
}

}  // namespace multiscene
