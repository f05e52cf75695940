#include "core/GLESUtils/GLState.h"

#include <epoxy/gl.h>

namespace multiscene {

void GLState::setDepthTest(bool enabled) {
    if (enabled) FrameEdges::shared().requireMultisampling();  // surfaces may cut each other anywhere
    if (enabled)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
}

bool GLState::comparesDepths() {
    GLint bits = 0;
    glGetIntegerv(GL_DEPTH_BITS, &bits);
    return bits > 0 && glIsEnabled(GL_DEPTH_TEST);
}

namespace {

struct BlendFunction {
    uint32_t source = GL_SRC_ALPHA, destination = GL_ONE_MINUS_SRC_ALPHA;
};

/// Of the one context that frames are drawn in.
BlendFunction blendFunction;

void blend(uint32_t source, uint32_t destination) {
    glBlendFuncSeparate(source, destination, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

}  // namespace

void GLState::setBlendFunction(uint32_t srcFactor, uint32_t dstFactor) {
    blendFunction = {srcFactor, dstFactor};
    FrameEdges::shared().setBlendsByAlpha(srcFactor == GL_SRC_ALPHA && dstFactor == GL_ONE_MINUS_SRC_ALPHA);
    blend(srcFactor, dstFactor);
}

bool GLState::canBlendPremultiplied() {
    return blendFunction.source == GL_SRC_ALPHA && blendFunction.destination != GL_SRC_COLOR &&
           blendFunction.destination != GL_ONE_MINUS_SRC_COLOR;
}

bool GLState::takesColors(SourceColors colors) {
    return canBlendPremultiplied() || colors == SourceColors::Opaque ||
           (colors == SourceColors::Premultiplied && blendFunction.source == GL_ONE);
}

bool GLState::hides(SourceColors colors) {
    return colors == SourceColors::Opaque && blendFunction.source == GL_SRC_ALPHA &&
           blendFunction.destination == GL_ONE_MINUS_SRC_ALPHA;
}

glm::vec2 GLState::sentColors() {
    switch (blendFunction.source) {
        case GL_ONE:
            return {1, 0};
        case GL_ZERO:
        case GL_SRC_ALPHA:
        case GL_SRC_ALPHA_SATURATE:
            return {0, 0};
    }
    return {0, 1};
}

void GLState::announceColors(SourceColors colors) {
    const bool isStraight = colors == SourceColors::Straight;
    // Opaque colours replace what is there: nothing has to be read.
    if (colors == SourceColors::Opaque && blendFunction.destination == GL_ONE_MINUS_SRC_ALPHA)
        glDisable(GL_BLEND);
    else
        glEnable(GL_BLEND);
    blend(isStraight ? blendFunction.source : GL_ONE, blendFunction.destination);
}

void GLState::resetBlendFunction() { setBlendFunction(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); }

void GLState::setDefaults() {
    setDepthTest(false);
    glEnable(GL_BLEND);
    resetBlendFunction();
}

void GLState::finish() { glFinish(); }

void GLState::bindTarget(uint32_t framebuffer, int32_t width, int32_t height) {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glViewport(0, 0, width, height);
}

void GLState::setScissor(const PixelRect& region) {
    glEnable(GL_SCISSOR_TEST);
    glScissor(region.x, region.y, region.width, region.height);
}

void GLState::resetScissor() { glDisable(GL_SCISSOR_TEST); }

void GLState::clearColor() {
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
}

void GLState::bindTexture(int unit, uint32_t texture) {
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_2D, texture);
}

}  // namespace multiscene
