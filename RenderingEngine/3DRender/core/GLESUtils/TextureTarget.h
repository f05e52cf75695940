// The one way to make a framebuffer that draws into a texture.
#pragma once

#include "core/GLESUtils/GLObject.h"

namespace multiscene {

/// Makes framebuffer and texture, four channels in the driver's preferred order, linear filters, clamped to
/// the edge, attached to each other, and clears the texture to transparent. The framebuffer bound before is
/// bound afterwards; texture unit 0 is active with nothing bound. The clear colour becomes (0, 0, 0, 0). An
/// incomplete framebuffer stays as it is: it draws nothing.
void createTextureTarget(GLFramebuffer& framebuffer, GLTexture& texture, int width, int height);

}  // namespace multiscene
