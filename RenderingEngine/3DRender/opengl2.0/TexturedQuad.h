// Drawing one textured quad: the pattern that the quads, their variants and the video sources share.
#pragma once

#include <glm/glm.hpp>

#include "core/GLESUtils/DrawQuad.h"
#include "core/GLESUtils/FrameEdges.h"
#include "opengl2.0/Shader.h"

namespace multiscene {

/// What is drawn; refers to the caller's memory.
struct TexturedQuad {
    unsigned int texture = 0;        ///< on unit 0, "videoFrame"
    const glm::mat4& mvpMatrix;      ///< "u_mvpMatrix"
    const glm::mat4& textureMatrix;  ///< "u_textureMatrix"
    QuadCorners corners;
    /// The texture's colours are multiplied by its alpha: pictures, texts and render targets are, videos and
    /// PVR textures are not. "isPreMultiplication" of the shaders that list it.
    bool premultiplied = false;
    /// Alpha is 1 everywhere, that of the texture and the opacity that multiplies it.
    bool opaque = false;
    /// Whether the texture can be repeated where coordinates leave it; videos and render targets cannot.
    bool mayRepeat = false;
    /// Hides the outline; only where all of the picture is shown, its edges on the edges of the quad.
    ClearMargin clearMargin = {};
};

/// Binds a texture for the next quad: `texture` on `unit`, whose number goes into `sampler`. On another unit
/// than 0 it is sampled inside its edges only, and clamped to them. Unit 0 is active afterwards. The shader
/// must be current.
void bindTexture(Shader& shader, const char* sampler, int unit, unsigned int texture);

/// The bound texture repeats itself if one of the four coordinates, moved by the matrix, lies outside of it;
/// else its edges hold their colour instead of mixing in that of the opposite edge.
void wrapTexture(const glm::mat4& textureMatrix, const float* textureCoordinates);

/// Makes the shader current, sets the shared uniforms and draws. Uniforms of a variant are set before, after
/// shader.useShader(). Draws nothing, and returns false, when the texture or the program is 0, or when the
/// quad lies outside the part of the frame that is being drawn.
bool drawTexturedQuad(Shader& shader, const TexturedQuad& quad);

}  // namespace multiscene
