#include "core/GLESUtils/QVFrameBufferToTexture.h"

#include <epoxy/gl.h>

namespace multiscene {

namespace {

/// Makes framebuffer and texture, attached to each other, and clears them to transparent. The framebuffer
/// bound before is bound afterwards. An incomplete framebuffer draws nothing.
void createTarget(GLFramebuffer& framebuffer, GLTexture& texture, int width, int height) {
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    framebuffer.create();
    texture.create();
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer.name());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture.name());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
        glTexParameteri(GL_TEXTURE_2D, filter, GL_LINEAR);
    for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
        glTexParameteri(GL_TEXTURE_2D, axis, GL_CLAMP_TO_EDGE);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
}

}  // namespace

QVFrameBufferToTexture::QVFrameBufferToTexture(double width, double height)
    : fboWidth_(static_cast<int>(width)), fboHeight_(static_cast<int>(height)) {}

unsigned int QVFrameBufferToTexture::frameBuffer() {
    if (!frameBuffer_)
        createTarget(frameBuffer_, texture_->setDrawnByGL(fboWidth_, fboHeight_), fboWidth_, fboHeight_);
    return frameBuffer_.name();
}

platform::Canvas QVFrameBufferToTexture::canvas() {
    constexpr long ours = 2;  // this object and its texture
    const ptrdiff_t stride = ptrdiff_t{fboWidth_} * 4;
    if (!memory_ || memory_.use_count() > ours)
        memory_ = std::make_shared<std::vector<uint8_t>>(static_cast<size_t>(stride * fboHeight_));
    return {.pixels = memory_->data() + stride * (fboHeight_ - 1),
            .stride = -stride,
            .width = fboWidth_,
            .height = fboHeight_};
}

void QVFrameBufferToTexture::setPainted() {
    texture_->setPainted({.pixels = memory_->data(),
                          .stride = ptrdiff_t{fboWidth_} * 4,
                          .width = fboWidth_,
                          .height = fboHeight_},
                         memory_);
}

void QVFrameBufferToTexture::destroyFramebuffer() {
    frameBuffer_.destroy();
    memory_.reset();
    texture_->clear();
}

}  // namespace multiscene
