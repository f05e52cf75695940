#include "3DObject/FTGLTextObject/QVGLFont2DTextureFontObject3D.h"

#include <algorithm>

#include "core/GLESUtils/TextureUpload.h"
#include "core/NodeTypes.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "opengl2.0/TexturedQuad.h"

namespace multiscene {

constexpr KeyTable font2DKeys{"QVGLFont2DTextureFontObject3D", "Flat letters.", &fontObjectKeys, {}};

QV_REGISTER_NODE_TYPE(QVGLFont2DTextureFontObject3D, font2DKeys);

namespace {

/// The rectangle around all letters.
QVQuadObject3D::Corners boundsOf(const std::vector<platform::LetterVertex>& triangles) {
    using platform::LetterVertex;
    const auto [left, right] = std::ranges::minmax(triangles, {}, &LetterVertex::x);
    const auto [bottom, top] = std::ranges::minmax(triangles, {}, &LetterVertex::y);
    return {left.x, bottom.y, 0, right.x, bottom.y, 0, right.x, top.y, 0, left.x, top.y, 0};
}

}  // namespace

void QVGLFont2DTextureFontObject3D::makeLetters(const platform::LetterText& text) {
    platform::FlatLetters letters = platform::flatLetters(text);
    triangles_ = std::move(letters.triangles);
    if (triangles_.empty()) return;
    bounds_ = boundsOf(triangles_);
    atlas_.create();
    uploadTexture(atlas_.name(), {.pixels = letters.atlas.rgba.data(),
                                  .width = letters.atlas.width,
                                  .height = letters.atlas.height,
                                  .stride = letters.atlas.stride()});
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
    drawTriangles(*shader, triangles_, false);
}

}  // namespace multiscene
