#include "core/GLESUtils/GLState.h"

#include <epoxy/gl.h>

namespace multiscene {

void GLState::setDepthTest(bool enabled) {
    if (enabled)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
}

void GLState::setBlendFunction(uint32_t srcFactor, uint32_t dstFactor) {
    glBlendFuncSeparate(srcFactor, dstFactor, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

void GLState::resetBlendFunction() {
    setBlendFunction(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void GLState::setDefaults() {
    setDepthTest(false);
    glEnable(GL_BLEND);
    resetBlendFunction();
}

void GLState::finish() {
    glFinish();
}

}  // namespace multiscene
