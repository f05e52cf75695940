#include "core/GLESUtils/QVFrameBufferToTexture.h"

#include <epoxy/gl.h>

#include "core/GLESUtils/FrameEdges.h"
#include "core/GLESUtils/QVGlContextManager.h"
#include "core/GLESUtils/TextureTarget.h"

namespace multiscene {

QVFrameBufferToTexture::QVFrameBufferToTexture(double width, double height, TargetShaders shaders)
    : fboWidth_(static_cast<int>(width)), fboHeight_(static_cast<int>(height)), shaders_(shaders) {}

void QVFrameBufferToTexture::createFrameBufferObject() {
    if (frameBuffer_ || !QVGlContextManager::shared().useContext()) return;
    createTextureTarget(frameBuffer_, fboTexture_, fboWidth_, fboHeight_, shaders_);
}

void QVFrameBufferToTexture::bindRenderToTextureFramebuffer() {
    // What a texture shows of a frame drawn in parts is drawn once, with the whole frame.
    FrameEdges::shared().requireMultisampling();
    glGetIntegerv(GL_VIEWPORT, t_viewport_.data());
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    oldRenderFBO_ = static_cast<unsigned int>(bound);
    glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer_.name());
    glViewport(0, 0, fboWidth_, fboHeight_);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
}

void QVFrameBufferToTexture::unBindRenderToTextureFramebuffer() {
    glBindFramebuffer(GL_FRAMEBUFFER, oldRenderFBO_);
    glViewport(t_viewport_[0], t_viewport_[1], t_viewport_[2], t_viewport_[3]);
}

void QVFrameBufferToTexture::destroyFramebuffer() {
    if (!frameBuffer_ && !fboTexture_) return;
    QVGlContextManager::shared().useContext();
    fboTexture_.destroy();
    frameBuffer_.destroy();
}

}  // namespace multiscene
