#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"

#include <algorithm>

#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"
#include "core/SkippedMedia.h"
#include "dataMode/TextSettings.h"

namespace multiscene {

static constexpr Key fontInfoKeyList[] = {
    {.name = "textString",
     .type = KeyType::Text,
     .meaning = "the \"renderMapKey\" of a text of the user; where there is none, the text itself",
     .lookup = KeyLookup::UserMap,
     .required = true},
    {.name = "fontSize",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "1",
     .meaning = "height of the letters, from which all their sizes follow",
     .minimum = 0},
    {.name = "textAlignment",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "of the lines: 0 left, 1 middle, 2 right",
     .minimum = 0,
     .maximum = 2},
    {.name = "lineLength",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "longer lines are broken; 0: only line feeds break",
     .minimum = 0},
};
constexpr KeyTable fontInfoKeys{"TextureFontInfo", "A text whose letters stand in the scene.", &textKeys,
                                fontInfoKeyList};

static constexpr Key fontObjectKeyList[] = {
    {.name = "TextureFontInfo",
     .type = KeyType::Dictionary,
     .meaning = "the text and its font",
     .required = true,
     .children = &fontInfoKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the opacity; without any it is 1",
     .children = &alphaAnimationKeys},
};
const KeyTable fontObjectKeys{"QVGLFontTextObjectBase", "Letters that stand in the scene.", &transformKeys,
                              fontObjectKeyList};

void QVGLFontTextObjectBase::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTransformBase::rendInfoWithDic(info);
    fontInfo_ = KeyReader(fontObjectKeys, info).value("TextureFontInfo");
    textColor_ = readTextColor(KeyReader(fontInfoKeys, fontInfo_), "textColor");
}

platform::LetterText QVGLFontTextObjectBase::letterText(Playback& playback) const {
    const KeyReader reader(fontInfoKeys, fontInfo_);
    const std::string key = reader.text("textString");
    const float size = reader.number("fontSize") * findTextScale(key, sceneIdentifier(), playback.settings());
    return {
        .text = findText(key, sceneIdentifier(), reader.int32("textMaxLenght"), playback.settings()),
        .font = findFont(reader.text("fontName"), size, sceneResourceFolderPath(), playback),
        .alignment = static_cast<platform::TextAlignment>(std::clamp(reader.int32("textAlignment"), 0, 2)),
        .lineLength = reader.number("lineLength")};
}

void QVGLFontTextObjectBase::updateDue(const Tick& tick) {
    QVObject3DTransformBase::updateDue(tick);
    Playback* const played = playback();
    if (hasLetters_ || !played) return;
    hasLetters_ = true;
    const std::vector<char32_t> leftOut = makeLetters(letterText(*played));
    if (!leftOut.empty()) reportSkipped(*this, "letters that cannot be drawn", letterNames(leftOut));
}

void QVGLFontTextObjectBase::completeDue(const Tick& tick) {
    QVObject3DTransformBase::completeDue(tick);
    if (tick.frame == endFps()) dropLetters();
}

void QVGLFontTextObjectBase::animationWithInfo(const platform::Value::Array& keys) {
    renderAlpha_.read(keys, alphaAnimationKeys, "startRenderAlpha", "endRenderAlpha");
}

glm::vec4 QVGLFontTextObjectBase::shownColor() const {
    return {textColor_.red, textColor_.green, textColor_.blue, textColor_.alpha * renderAlpha()};
}

std::vector<MeshVertex> QVGLFontTextObjectBase::verticesOf(
    const std::vector<platform::LetterVertex>& letters) {
    std::vector<MeshVertex> vertices;
    vertices.reserve(letters.size());
    for (const platform::LetterVertex& at : letters)
        vertices.push_back({.position = {at.x, at.y, at.z},
                            .normal = {at.normalX, at.normalY, at.normalZ},
                            .textureCoordinate = {at.u, at.v}});
    return vertices;
}

void QVGLFontTextObjectBase::addTraceFields(platform::Value::Dictionary& fields) {
    QVObject3DTransformBase::addTraceFields(fields);
    fields["values"] = platform::Value(
        platform::Value::Dictionary{{"renderAlpha", platform::Value(static_cast<double>(renderAlpha()))}});
}

}  // namespace multiscene
