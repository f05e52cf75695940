#include "3DObject/FTGLTextObject/QVGLFont3DExtrudeFontObject3D.h"

#include <algorithm>
#include <array>

#include "3DObject/FTGLTextObject/LetterSettings.h"
#include "3DObject/MeshObject3D/SceneLight.h"
#include "core/Material/TextureInfoKeys.h"
#include "dataMode/TextSettings.h"
#include "format/NodeTypes.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "painter/ColorBytes.h"

namespace multiscene {

static constexpr Key solidInfoKeyList[] = {
    {.name = "bevelWidth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning =
         "the edges between front and sides are cut off, this far into the front; less where a letter is "
         "too thin for it",
     .minimum = 0},
    {.name = "bevelDepth",
     .type = KeyType::Number,
     .unit = "model units",
     .meaning =
         "how far the cut goes down the sides; none: as far as \"bevelWidth\"; half of \"textDepth\" at "
         "most",
     .minimum = 0},
    {.name = "bevelSteps",
     .type = KeyType::Integer,
     .fallback = "1",
     .meaning = "1: a flat cut; more make it round",
     .minimum = 1,
     .maximum = 8},
    {.name = "bevelColor",
     .type = KeyType::Color,
     .meaning = "colour of the cut edges; none: as \"textColor\""},
};
constexpr KeyTable solidInfoKeys{"TextureFontInfo of solid letters",
                                 "A text with a depth that stands in the scene.", &fontInfoKeys,
                                 solidInfoKeyList};

static constexpr Key font3DKeyList[] = {
    {.name = "TextureFontInfo",
     .type = KeyType::Dictionary,
     .meaning = "the text, its font and its look",
     .required = true,
     .children = &solidInfoKeys},
    {.name = "textDepth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0.2",
     .meaning = "from the front of the letters to their back",
     .minimum = 0},
    {.name = "sideColor",
     .type = KeyType::Color,
     .meaning = "colour of the letters' sides; none: a darker \"textColor\", when lit the same"},
    {.name = "FrontTextureInfo",
     .type = KeyType::Dictionary,
     .meaning = "a picture over the fronts of all letters together, as large as the block of their lines; of "
                "\"textColor\" only the alpha counts then",
     .children = &textureInfoKeys},
    {.name = "SideTextureInfo",
     .type = KeyType::Dictionary,
     .meaning = "a picture around the sides, once around each outline, its upper edge at the front",
     .children = &textureInfoKeys},
};
constexpr KeyTable font3DKeys{"QVGLFont3DExtrudeFontObject3D", "Letters with a depth, lit by the lights.",
                              &fontObjectKeys, font3DKeyList};

QV_REGISTER_NODE_TYPE(QVGLFont3DExtrudeFontObject3D, font3DKeys);

namespace {

/// What tells the sides and the cut edges from the front where no light does.
constexpr float unlitSides = 0.6f, unlitBevel = 0.8f;

std::optional<platform::Color> colorOf(const KeyReader& reader, const char* key) {
    return reader.has(key) ? std::optional(readTextColor(reader, key)) : std::nullopt;
}

}  // namespace

void QVGLFont3DExtrudeFontObject3D::rendInfoWithDic(const platform::Value& info) {
    QVGLFontTextObjectBase::rendInfoWithDic(info);
    const KeyReader reader(font3DKeys, info), bevel(solidInfoKeys, fontInfo());
    const auto number = [&](const char* key) { return readInRange(bevel, solidInfoKeys, key); };
    look_ = {.depth = readInRange(reader, font3DKeys, "textDepth"),
             .bevelWidth = number("bevelWidth"),
             .bevelDepth = number(bevel.has("bevelDepth") ? "bevelDepth" : "bevelWidth"),
             .bevelSteps = static_cast<int>(number("bevelSteps"))};
    front_ = FaceTexture(reader.value("FrontTextureInfo"));
    side_ = FaceTexture(reader.value("SideTextureInfo"));
    look_.frontsApart = front_.isGiven();
    look_.sidesApart = side_.isGiven();
    sideColor_ = colorOf(reader, "sideColor");
    bevelColor_ = colorOf(bevel, "bevelColor");
}

void QVGLFont3DExtrudeFontObject3D::updateDue(const Tick& tick) {
    QVGLFontTextObjectBase::updateDue(tick);
    for (FaceTexture* face : {&front_, &side_}) {
        if (tick.isNew && tick.frame == sartFps()) loadFace(*face);
        face->update(tick.frame);
    }
}

void QVGLFont3DExtrudeFontObject3D::completeDue(const Tick& tick) {
    QVGLFontTextObjectBase::completeDue(tick);
    if (tick.frame != endFps()) return;
    front_.drop();
    side_.drop();
}

void QVGLFont3DExtrudeFontObject3D::loadFace(FaceTexture& face) {
    face.load({.scene = scene(),
               .object3D = this,
               .textureObjectPath = settings().computeFilePathUserMap(
                   textureNameOf(face.info()), sceneIdentifier(), sceneResourceFolderPath()),
               .textureSerialStartFps = sartFps(),
               .textureSerialEndFps = endFps()});
}

QVGLFont3DExtrudeFontObject3D::Made QVGLFont3DExtrudeFontObject3D::makeLetters(
    const platform::LetterText& text) {
    platform::SolidLetters letters = platform::solidLetters(text, look_);
    if (!letters.atlas.isEmpty()) atlas_.setPicture(std::move(letters.atlas));
    letters_ = DrawnLetters::of(letters.letters);
    fronts_ = DrawnLetters::of(letters.fronts);
    sides_ = DrawnLetters::of(letters.sides);
    colored_ = DrawnLetters::of(letters.colored);
    return {letters.block, std::move(letters.parts), std::move(letters.leftOut)};
}

void QVGLFont3DExtrudeFontObject3D::dropLetters() {
    letters_ = fronts_ = sides_ = colored_ = {};
    colors_.clear();
    atlas_.clear();
    filled_.reset();
}

/// The text's own colour, darker where no light tells the surfaces apart.
glm::vec4 QVGLFont3DExtrudeFontObject3D::shown(const std::optional<platform::Color>& color,
                                               float unlit) const {
    if (color) return {color->red, color->green, color->blue, color->alpha * renderAlpha()};
    return shownColor() * (isLightEnable() ? glm::vec4(1) : glm::vec4(glm::vec3(unlit), 1));
}

/// The colours' alpha is an opacity too, so that they are not multiplied by it.
void QVGLFont3DExtrudeFontObject3D::fillColors() {
    const std::array colors{colorBytes(shownColor()), colorBytes(shown(bevelColor_, unlitBevel)),
                            colorBytes(shown(sideColor_, unlitSides)), colorBytes(glm::vec4(0))};
    if (filled_ == colors) return;
    filled_ = colors;
    platform::Bitmap texels(static_cast<int>(colors.size()), 1);
    auto at = texels.rgba.begin();
    for (const auto& color : colors) at = std::ranges::copy(color, at).out;
    std::vector<platform::Bitmap> levels;
    levels.push_back(std::move(texels));
    colors_.setLevels(std::move(levels), false);
}

void QVGLFont3DExtrudeFontObject3D::drawLetters(Painter& painter) {
    fillColors();
    drawFace(painter, side_, sides_, sideColor_ ? sideColor_->alpha * renderAlpha() : shownColor().a);
    drawFaces(painter, colors_, letters_, 1);
    drawFace(painter, front_, fronts_, shownColor().a);
    drawFaces(painter, atlas_, colored_, shownColor().a);
}

void QVGLFont3DExtrudeFontObject3D::drawFace(Painter& painter, const FaceTexture& face,
                                             const DrawnLetters& letters, float opacity) {
    if (Texture* texture = face.texture()) drawFaces(painter, *texture, letters, opacity, face.matrix());
}

bool QVGLFont3DExtrudeFontObject3D::isOpaque(const Texture& texture) const {
    if (&texture != &colors_) return texture.isOpaque();
    // The last texel is no colour of the letters.
    return std::all_of(filled_->begin(), filled_->end() - 1,
                       [](const auto& texel) { return texel[3] == 255; });
}

void QVGLFont3DExtrudeFontObject3D::drawFaces(Painter& painter, Texture& texture, const DrawnLetters& letters,
                                              float opacity, const glm::mat4& textureMatrix) {
    forEachRun(letters, [&](std::span<const MeshVertex> corners, const LetterPose& pose) {
        const glm::mat4 place = placed(pose);
        MeshDraw mesh{.corners = corners,
                      .sides = MeshSides::Outer,
                      .shader = "font_3dShader",
                      .color = {},
                      .fade = 1 - opacity * pose.opacity,
                      .texture = &texture,
                      .mvpMatrix = projTransform() * place,
                      .textureMatrix = textureMatrix,
                      .lights = {},
                      .isOpaque = isOpaque(texture) && opacity * pose.opacity >= 1,
                      .alphaIsOpacity = true,
                      .state = {}};
        addSceneLight(mesh, *this, place);
        painter.draw(std::move(mesh));
    });
}

}  // namespace multiscene
