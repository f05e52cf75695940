#include "3DObject/FTGLTextObject/QVGLFont2DTextureFontObject3D.h"

#include <algorithm>
#include <cmath>

#include "core/GLESUtils/GLState.h"
#include "core/NodeTypes.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "opengl2.0/TexturedQuad.h"

namespace multiscene {

constexpr KeyTable font2DKeys{"QVGLFont2DTextureFontObject3D", "Flat letters.", &fontObjectKeys, {}};

QV_REGISTER_NODE_TYPE(QVGLFont2DTextureFontObject3D, font2DKeys);

namespace {

/// The rectangle around all letters.
QVQuadObject3D::Corners boundsOf(const platform::FlatLetters& letters) {
    using platform::LetterVertex;
    float left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY;
    for (const auto* triangles : {&letters.triangles, &letters.coloredTriangles}) {
        for (const LetterVertex& at : *triangles) {
            left = std::min(left, at.x), right = std::max(right, at.x);
            bottom = std::min(bottom, at.y), top = std::max(top, at.y);
        }
    }
    return {left, bottom, 0, right, bottom, 0, right, top, 0, left, top, 0};
}

}  // namespace

std::vector<char32_t> QVGLFont2DTextureFontObject3D::makeLetters(const platform::LetterText& text) {
    platform::FlatLetters letters = platform::flatLetters(text);
    if (!letters.atlas.isEmpty()) {
        bounds_ = boundsOf(letters);
        uploadAtlas(letters.atlas, atlas_);
    }
    triangles_ = std::move(letters.triangles);
    coloredTriangles_ = std::move(letters.coloredTriangles);
    return std::move(letters.leftOut);
}

void QVGLFont2DTextureFontObject3D::drawLetters() {
    // Each letter is clear at its edges, so that none of them needs smoothing.
    if (atlas_.name() == 0 || !FrameEdges::shared().admits(projTransform(), bounds_.data(), {0.5f, 0.5f}))
        return;
    const auto shader = ShaderManager::sharedManager().createShader("font_2dShader", "font_2dShader.plist");
    shader->useShader();
    bindTexture(*shader, "videoFrame", 0, atlas_.name());
    shader->setUniform("u_mvpMatrix", projTransform());
    shader->setUniform("u_textureMatrix", glm::mat4(1));
    shader->setUniform("SourceColor", shownColor());
    shader->setUniform("sentColors", GLState::sentColors());
    drawTriangles(*shader, triangles_, false);
    // Emoji keep their own colours.
    shader->setUniform("SourceColor", glm::vec4(1, 1, 1, shownColor().a));
    drawTriangles(*shader, coloredTriangles_, false);
}

}  // namespace multiscene
