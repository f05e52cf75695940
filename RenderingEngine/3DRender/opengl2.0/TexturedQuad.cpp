#include "opengl2.0/TexturedQuad.h"

#include <epoxy/gl.h>

namespace multiscene {

void bindTexture(Shader& shader, const char* sampler, int unit, unsigned int texture) {
    glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    if (unit != 0) glActiveTexture(GL_TEXTURE0);
    shader.setUniform(sampler, unit);
}

bool drawTexturedQuad(Shader& shader, const TexturedQuad& quad) {
    if (quad.texture == 0 || shader.programHandle() == 0) return false;
    if (!FrameEdges::shared().admits(quad.mvpMatrix, quad.corners.positions, quad.clearMargin)) return false;
    shader.useShader();
    bindTexture(shader, "videoFrame", 0, quad.texture);
    shader.setUniform("u_mvpMatrix", quad.mvpMatrix);
    shader.setUniform("u_textureMatrix", quad.textureMatrix);
    shader.setUniform("isPreMultiplication", quad.premultiplied ? 1 : 0);
    drawQuadFan(shader.attributeHandle("position"), shader.attributeHandle("inputTextureCoordinate"),
                quad.corners);
    return true;
}

}  // namespace multiscene
