#include "core/QVSceneRenderToTexture.h"

#include "core/GLESUtils/GLState.h"
#include "core/GLESUtils/TextureTarget.h"
#include "core/QVScene3D.h"

namespace multiscene {

QVSceneRenderToTexture::QVSceneRenderToTexture(QVScene3D& renderScene) : renderScene_(renderScene) {
    const RenderDriver& driver = renderScene.renderManager();
    computeFboSizeWithSceneWidth(driver.bufferWidth(), driver.bufferHeight(), driver.sceneTextureMaxWidth());
}

void QVSceneRenderToTexture::computeFboSizeWithSceneWidth(int32_t width, int32_t height, int32_t maxWidth) {
    // The limit looks at the width only: a tall picture keeps its full height.
    fboWidth_ = width <= maxWidth ? width : maxWidth;
    fboHeight_ =
        width <= maxWidth ? height : static_cast<int32_t>(static_cast<double>(height) * maxWidth / width);
}

void QVSceneRenderToTexture::setupRTT() {
    if (!frameBuffer_) createTextureTarget(frameBuffer_, fboTexture_, fboWidth_, fboHeight_);
}

void QVSceneRenderToTexture::renderSceneToTexture() {
    setupRTT();
    GLState::bindTarget(frameBuffer_.name(), fboWidth_, fboHeight_);
    GLState::clearColor();
    GLState::bindTexture(0, fboTexture_.name());
    renderScene_.render();
    GLState::finish();
    GLState::bindTexture(0, 0);
}

void QVSceneRenderToTexture::destroyRTT() {
    fboTexture_.destroy();
    frameBuffer_.destroy();
}

uint32_t QVSceneRenderToTexture::CVTextureId() {
    setupRTT();
    return fboTexture_.name();
}

}  // namespace multiscene
