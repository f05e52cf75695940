#include "3DObject/FTGLTextObject/QVGLFont3DExtrudeFontObject3D.h"

#include <algorithm>
#include <array>

#include "3DObject/MeshObject3D/SceneLight.h"
#include "dataMode/TextSettings.h"
#include "format/NodeTypes.h"

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
    if (!letters.atlas.isEmpty()) atlas_.setPicture(std::move(letters.atlas));
    triangles_ = verticesOf(letters.triangles);
    coloredTriangles_ = verticesOf(letters.coloredTriangles);
    return std::move(letters.leftOut);
}

void QVGLFont3DExtrudeFontObject3D::dropLetters() {
    triangles_.clear();
    coloredTriangles_.clear();
    colors_.clear();
    atlas_.clear();
}

glm::vec4 QVGLFont3DExtrudeFontObject3D::shownSideColor() const {
    if (sideColor_)
        return {sideColor_->red, sideColor_->green, sideColor_->blue, sideColor_->alpha * renderAlpha()};
    return shownColor() * (isLightEnable() ? glm::vec4(1) : glm::vec4(glm::vec3(unlitSides), 1));
}

/// The colours' alpha is an opacity too, so that they are not multiplied by it.
void QVGLFont3DExtrudeFontObject3D::fillColors() {
    platform::Bitmap texels(2, 1);
    const auto front = texelOf(shownColor()), side = texelOf(shownSideColor());
    std::ranges::copy(front, texels.rgba.begin());
    std::ranges::copy(side, texels.rgba.begin() + 4);
    std::vector<platform::Bitmap> levels;
    levels.push_back(std::move(texels));
    colors_.setLevels(std::move(levels), false);
}

void QVGLFont3DExtrudeFontObject3D::drawLetters(Painter& painter) {
    fillColors();
    drawFaces(painter, colors_, triangles_, 0);
    if (!coloredTriangles_.empty()) drawFaces(painter, atlas_, coloredTriangles_, 1 - shownColor().a);
}

void QVGLFont3DExtrudeFontObject3D::drawFaces(Painter& painter, Texture& texture,
                                              const std::vector<MeshVertex>& triangles, float fade) {
    MeshDraw mesh{.outside = triangles,
                  .inside = {},
                  .sides = MeshSides::Outer,
                  .shader = "font_3dShader",
                  .definitions = {},
                  .uniforms = {{"fade", fade}},
                  .texture = &texture,
                  .mvpMatrix = projTransform(),
                  .alphaIsOpacity = true,
                  .state = {}};
    addSceneLight(mesh, *this);
    painter.draw(std::move(mesh));
}

}  // namespace multiscene
