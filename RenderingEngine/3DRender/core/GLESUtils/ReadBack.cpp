#include "core/GLESUtils/ReadBack.h"

#include <epoxy/gl.h>

#include "core/GLESUtils/PixelRows.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

void readFramebuffer(unsigned int framebuffer, int width, int height, PixelOrder order, uint8_t* pixels,
                     int stride) {
    const platform::GLCaps& caps = platform::GLContext::current()->caps();
    const bool swap = order == PixelOrder::BGRA && !caps.bgraReadBack;
    const bool padded = stride != width * 4;
    const GLenum format = order == PixelOrder::BGRA && !swap ? GL_BGRA_EXT : GL_RGBA;
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    if (caps.rowLength && padded) glPixelStorei(GL_PACK_ROW_LENGTH, stride / 4);
    if (caps.rowLength || !padded) {
        glReadPixels(0, 0, width, height, format, GL_UNSIGNED_BYTE, pixels);
    } else {
        for (int row = 0; row < height; ++row)
            glReadPixels(0, row, width, 1, format, GL_UNSIGNED_BYTE, pixels + size_t(row) * size_t(stride));
    }
    if (caps.rowLength && padded) glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    for (int row = 0; swap && row < height; ++row) {
        uint8_t* line = pixels + size_t(row) * size_t(stride);
        copyPixels(line, line, width, true);
    }
}

}  // namespace multiscene
