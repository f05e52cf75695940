#include "3DObject/FTGLTextObject/QVGLFont3DExtrudeFontObject3D.h"

#include <array>

#include "3DObject/MeshObject3D/SceneLight.h"
#include "core/GLESUtils/FrameEdges.h"
#include "core/GLESUtils/GLState.h"
#include "core/GLESUtils/TextureUpload.h"
#include "core/NodeTypes.h"
#include "dataMode/TextSettings.h"
#include "opengl2.0/TexturedQuad.h"

namespace multiscene {

static constexpr Key font3DKeyList[] = {
    {.name = "textDepth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0.2",
     .meaning = "from the front of the letters to their back",
     .minimum = 0},
    {.name = "sideColor",
     .type = KeyType::Color,
     .meaning = "colour of the letters' sides; none: a darker \"textColor\", when lit the same"},
};
constexpr KeyTable font3DKeys{"QVGLFont3DExtrudeFontObject3D", "Letters with a depth, lit by the lights.",
                              &fontObjectKeys, font3DKeyList};

QV_REGISTER_NODE_TYPE(QVGLFont3DExtrudeFontObject3D, font3DKeys);

namespace {

/// What tells the sides from the front where no light does.
constexpr float unlitSides = 0.6f;

std::array<uint8_t, 4> texelOf(const glm::vec4& color) {
    const glm::vec4 bytes = glm::round(glm::clamp(color, 0.0f, 1.0f) * 255.0f);
    return {uint8_t(bytes.r), uint8_t(bytes.g), uint8_t(bytes.b), uint8_t(bytes.a)};
}

}  // namespace

void QVGLFont3DExtrudeFontObject3D::rendInfoWithDic(const platform::Value& info) {
    QVGLFontTextObjectBase::rendInfoWithDic(info);
    const KeyReader reader(font3DKeys, info);
    textDepth_ = reader.number("textDepth");
    if (reader.has("sideColor")) sideColor_ = readTextColor(reader, "sideColor");
}

std::vector<char32_t> QVGLFont3DExtrudeFontObject3D::makeLetters(const platform::LetterText& text) {
    platform::SolidLetters letters = platform::solidLetters(text, textDepth_);
    if (!letters.atlas.isEmpty()) uploadAtlas(letters.atlas, atlas_);
    triangles_ = std::move(letters.triangles);
    coloredTriangles_ = std::move(letters.coloredTriangles);
    return std::move(letters.leftOut);
}

void QVGLFont3DExtrudeFontObject3D::dropLetters() {
    triangles_.clear();
    coloredTriangles_.clear();
    colors_.destroy();
    atlas_.destroy();
}

glm::vec4 QVGLFont3DExtrudeFontObject3D::shownSideColor() const {
    if (sideColor_)
        return {sideColor_->red, sideColor_->green, sideColor_->blue, sideColor_->alpha * renderAlpha()};
    return shownColor() * (isLightEnable() ? glm::vec4(1) : glm::vec4(glm::vec3(unlitSides), 1));
}

void QVGLFont3DExtrudeFontObject3D::uploadColors() {
    const std::array<std::array<uint8_t, 4>, 2> texels{texelOf(shownColor()), texelOf(shownSideColor())};
    colors_.create();
    uploadTexture(colors_.name(), {.pixels = texels[0].data(), .width = 2, .height = 1, .stride = 8});
}

void QVGLFont3DExtrudeFontObject3D::drawLetters() {
    FrameEdges::shared().requireMultisampling();
    const auto shader = shaderForSceneLight("font_3dShader", *this);
    uploadColors();
    drawWith(*shader, colors_.name(), triangles_, 0);
    if (!coloredTriangles_.empty()) drawWith(*shader, atlas_.name(), coloredTriangles_, 1 - shownColor().a);
}

void QVGLFont3DExtrudeFontObject3D::drawWith(Shader& shader, unsigned int texture,
                                             const std::vector<platform::LetterVertex>& triangles,
                                             float fade) {
    shader.useShader();
    bindTexture(shader, "videoFrame", 0, texture);
    shader.setUniform("u_mvpMatrix", projTransform());
    shader.setUniform("u_textureMatrix", glm::mat4(1));
    shader.setUniform("isPreMultiplication", 0);
    shader.setUniform("fade", fade);
    // The colours' alpha is an opacity too.
    const glm::vec2 sent = GLState::sentColors();
    shader.setUniform("sentColors", glm::vec2(sent.x + sent.y, 0));
    setSceneLight(shader, *this);
    drawTriangles(shader, triangles, true);
}

}  // namespace multiscene
