#include "opengl2.0/TexturedQuad.h"

#include <epoxy/gl.h>

#include "core/GLESUtils/GLState.h"
#include "core/GLESUtils/TextureUpload.h"

namespace multiscene {

void bindTexture(Shader& shader, const char* sampler, int unit, unsigned int texture) {
    glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    if (unit != 0) {
        setTextureWrap(TextureWrap::ClampToEdge);
        glActiveTexture(GL_TEXTURE0);
    }
    shader.setUniform(sampler, unit);
}

namespace {

SourceColors colorsOf(const Shader& shader, const TexturedQuad& quad) {
    if (!shader.keepsPremultiplication() || !GLState::canBlendPremultiplied()) return SourceColors::Straight;
    if (quad.opaque) return SourceColors::Opaque;
    return quad.premultiplied ? SourceColors::Premultiplied : SourceColors::Straight;
}

}  // namespace

void wrapTexture(const glm::mat4& textureMatrix, const float* textureCoordinates) {
    constexpr float rounding = 1e-4f;
    bool isInside = true;
    for (int corner = 0; corner < 4; ++corner) {
        const float* given = textureCoordinates + 2 * corner;
        const glm::vec2 at(textureMatrix * glm::vec4(given[0], given[1], 0, 1));
        isInside = isInside && glm::all(glm::greaterThanEqual(at, glm::vec2(-rounding))) &&
                   glm::all(glm::lessThanEqual(at, glm::vec2(1 + rounding)));
    }
    setTextureWrap(isInside ? TextureWrap::ClampToEdge : TextureWrap::Repeat);
}

bool drawTexturedQuad(Shader& shader, const TexturedQuad& quad) {
    if (quad.texture == 0 || shader.programHandle() == 0) return false;
    if (!FrameEdges::shared().admits(quad.mvpMatrix, quad.corners.positions, quad.clearMargin)) return false;
    shader.useShader();
    bindTexture(shader, "videoFrame", 0, quad.texture);
    if (quad.mayRepeat) wrapTexture(quad.textureMatrix, quad.corners.textureCoordinates);
    shader.setUniform("u_mvpMatrix", quad.mvpMatrix);
    shader.setUniform("u_textureMatrix", quad.textureMatrix);
    shader.setUniform("isPreMultiplication", quad.premultiplied ? 1 : 0);
    shader.setUniform("sentColors", GLState::sentColors());
    const SourceColors colors = colorsOf(shader, quad);
    if (colors != SourceColors::Straight) GLState::announceColors(colors);
    drawQuadFan(shader.attributeHandle("position"), shader.attributeHandle("inputTextureCoordinate"),
                quad.corners);
    if (colors != SourceColors::Straight) GLState::announceColors(SourceColors::Straight);
    return true;
}

}  // namespace multiscene
