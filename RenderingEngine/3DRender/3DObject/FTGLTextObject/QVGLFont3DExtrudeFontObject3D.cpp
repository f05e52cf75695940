#include "3DObject/FTGLTextObject/QVGLFont3DExtrudeFontObject3D.h"

#include <array>

#include "3DObject/MeshObject3D/SceneLight.h"
#include "core/GLESUtils/FrameEdges.h"
#include "core/GLESUtils/TextureUpload.h"
#include "core/NodeTypes.h"
#include "dataMode/TextSettings.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"
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

void QVGLFont3DExtrudeFontObject3D::makeLetters(const platform::LetterText& text) {
    triangles_ = platform::solidLetters(text, textDepth_).triangles;
}

void QVGLFont3DExtrudeFontObject3D::dropLetters() {
    triangles_.clear();
    colors_.destroy();
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
    const auto shader = ShaderManager::sharedManager().createShader("font_3dShader", "font_3dShader.plist");
    uploadColors();
    shader->useShader();
    bindTexture(*shader, "videoFrame", 0, colors_.name());
    shader->setUniform("u_mvpMatrix", projTransform());
    shader->setUniform("u_textureMatrix", glm::mat4(1));
    shader->setUniform("isPreMultiplication", 0);
    setSceneLight(*shader, *this);
    drawTriangles(*shader, triangles_, true);
}

}  // namespace multiscene
