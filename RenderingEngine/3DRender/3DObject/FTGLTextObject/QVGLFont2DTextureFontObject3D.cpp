#include "3DObject/FTGLTextObject/QVGLFont2DTextureFontObject3D.h"

#include "3DObject/FTGLTextObject/LetterSettings.h"
#include "dataMode/TextSettings.h"
#include "format/NodeTypes.h"

namespace multiscene {

static constexpr Key flatInfoKeyList[] = {
    {.name = "textDrawingMode",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "0 filled, 1 outline only, 2 filled with an outline around it, 3 invisible",
     .minimum = 0,
     .maximum = 3},
    {.name = "strokeColor",
     .type = KeyType::Color,
     .fallback = "0,0,0,1",
     .meaning = "colour of the outline"},
    {.name = "strokeWidth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "width of the outline; half of it lies outside the letters. Two letter heights at most",
     .minimum = 0},
    {.name = "isShowTextShadow",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "the letters cast a shadow, which moves with them"},
    {.name = "shadowColor",
     .type = KeyType::Color,
     .fallback = "0,0,0,0.5",
     .meaning = "colour of the shadow",
     .onlyWith = "isShowTextShadow"},
    {.name = "shadowOffset",
     .type = KeyType::Vector2,
     .unit = "model units",
     .fallback = "0,0",
     .meaning = "of the shadow, to the right and down",
     .onlyWith = "isShowTextShadow"},
    {.name = "shadowBlurRadius",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "over which the shadow's edge fades; 0: a sharp one. One letter height at most",
     .minimum = 0,
     .onlyWith = "isShowTextShadow"},
};
constexpr KeyTable flatInfoKeys{"TextureFontInfo of flat letters", "A flat text that stands in the scene.",
                                &fontInfoKeys, flatInfoKeyList};

static constexpr Key font2DKeyList[] = {
    {.name = "TextureFontInfo",
     .type = KeyType::Dictionary,
     .meaning = "the text, its font and its look",
     .required = true,
     .children = &flatInfoKeys},
};
constexpr KeyTable font2DKeys{"QVGLFont2DTextureFontObject3D", "Flat letters.", &fontObjectKeys,
                              font2DKeyList};

QV_REGISTER_NODE_TYPE(QVGLFont2DTextureFontObject3D, font2DKeys);

void QVGLFont2DTextureFontObject3D::rendInfoWithDic(const platform::Value& info) {
    QVGLFontTextObjectBase::rendInfoWithDic(info);
    const KeyReader reader(flatInfoKeys, fontInfo());
    const auto number = [&](const char* key) { return readInRange(reader, flatInfoKeys, key); };
    look_.mode = static_cast<platform::TextDrawingMode>(number("textDrawingMode"));
    look_.strokeWidth = number("strokeWidth");
    strokeColor_ = readTextColor(reader, "strokeColor");
    if (!reader.boolean("isShowTextShadow")) return;
    const glm::vec2 offset = reader.vector2("shadowOffset");
    look_.shadow = {offset.x, offset.y, number("shadowBlurRadius"), readTextColor(reader, "shadowColor")};
}

QVGLFont2DTextureFontObject3D::Made QVGLFont2DTextureFontObject3D::makeLetters(
    const platform::LetterText& text) {
    platform::FlatLetters letters = platform::flatLetters(text, look_);
    if (!letters.atlas.empty()) atlas_.setLevels(std::move(letters.atlas), true);
    shadow_ = DrawnLetters::of(letters.shadow);
    outline_ = DrawnLetters::of(letters.outline);
    letters_ = DrawnLetters::of(letters.letters);
    colored_ = DrawnLetters::of(letters.colored);
    return {letters.block, std::move(letters.parts), std::move(letters.leftOut)};
}

void QVGLFont2DTextureFontObject3D::dropLetters() {
    shadow_ = outline_ = letters_ = colored_ = {};
    atlas_.clear();
}

void QVGLFont2DTextureFontObject3D::drawLetters(Painter& painter) {
    const auto drawIn = [&](const DrawnLetters& letters, const glm::vec4& color) {
        forEachRun(letters, [&](std::span<const MeshVertex> corners, const LetterPose& pose) {
            painter.draw(LettersDraw{.corners = corners,
                                     .atlas = &atlas_,
                                     .color = color * glm::vec4(1, 1, 1, pose.opacity),
                                     .mvpMatrix = projTransform() * placed(pose),
                                     .state = {}});
        });
    };
    const auto faded = [&](const platform::Color& color) {
        return glm::vec4(color.red, color.green, color.blue, color.alpha * renderAlpha());
    };
    if (look_.shadow) drawIn(shadow_, faded(look_.shadow->color));
    drawIn(outline_, faded(strokeColor_));
    drawIn(letters_, shownColor());
    // Emoji keep their own colours.
    drawIn(colored_, glm::vec4(1, 1, 1, shownColor().a));
}

}  // namespace multiscene
