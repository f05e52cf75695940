#include "core/GLESUtils/ReadBack.h"

#include <epoxy/gl.h>

#include <vector>

#include "core/GLESUtils/PixelRows.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

void readFramebuffer(unsigned int framebuffer, int left, int bottom, const platform::Canvas& canvas) {
    const bool swap = !platform::GLContext::current()->caps().bgraReadBack;
    const size_t rowBytes = static_cast<size_t>(canvas.width) * 4;
    thread_local std::vector<uint8_t> rows;
    rows.resize(rowBytes * static_cast<size_t>(canvas.height));
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glReadPixels(left, bottom, canvas.width, canvas.height, swap ? GL_RGBA : GL_BGRA_EXT, GL_UNSIGNED_BYTE,
                 rows.data());
    // GL's first row is the lowest.
    for (int row = 0; row < canvas.height; ++row)
        copyPixels(rows.data() + static_cast<size_t>(canvas.height - 1 - row) * rowBytes,
                   canvas.pixels + row * canvas.stride, canvas.width, swap);
}

}  // namespace multiscene
