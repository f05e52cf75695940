// The one way to make a framebuffer that draws into a texture.
#pragma once

#include "core/GLESUtils/GLObject.h"

namespace multiscene {

/// Whose shaders draw into a target.
enum class TargetShaders {
    Any,  ///< templates bring theirs too
    /// The program's own only. Such a target is in the order of channels that the driver draws fastest.
    /// Mesa's fast path, which that turns on, mistakes rearranged channels (seen with 22.3); our shaders have
    /// none.
    OwnOnly,
};

/// Makes framebuffer and texture, four channels, linear filters, clamped to
/// the edge, attached to each other, and clears the texture to transparent. The framebuffer bound before is
/// bound afterwards; texture unit 0 is active with nothing bound. The clear colour becomes (0, 0, 0, 0). An
/// incomplete framebuffer stays as it is: it draws nothing.
void createTextureTarget(GLFramebuffer& framebuffer, GLTexture& texture, int width, int height,
                         TargetShaders shaders);

}  // namespace multiscene
