#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"

#include <glm/gtc/matrix_transform.hpp>

#include "3DObject/FTGLTextObject/LetterSettings.h"
#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"
#include "core/SkippedMedia.h"
#include "dataMode/TextSettings.h"

namespace multiscene {

static constexpr Key fontObjectKeyList[] = {
    {.name = "LetterAnimation",
     .type = KeyType::Array,
     .meaning = "motions of the letters, words or lines",
     .children = &letterAnimationKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the opacity; without any it is 1",
     .children = &alphaAnimationKeys},
};
const KeyTable fontObjectKeys{"QVGLFontTextObjectBase", "Letters that stand in the scene.", &transformKeys,
                              fontObjectKeyList};

DrawnLetters DrawnLetters::of(const platform::LetterLayer& layer) {
    DrawnLetters letters{.corners = {}, .pieces = layer.pieces};
    letters.corners.reserve(layer.corners.size());
    for (const platform::LetterVertex& at : layer.corners)
        letters.corners.push_back({.position = {at.x, at.y, at.z},
                                   .normal = {at.normalX, at.normalY, at.normalZ},
                                   .textureCoordinate = {at.u, at.v}});
    return letters;
}

void QVGLFontTextObjectBase::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTransformBase::rendInfoWithDic(info);
    fontInfo_ = info["TextureFontInfo"];
    textColor_ = readTextColor(KeyReader(fontInfoKeys, fontInfo_), "textColor");
    animation_ = LetterAnimation(KeyReader(fontObjectKeys, info).array("LetterAnimation"));
}

void QVGLFontTextObjectBase::updateDue(const Tick& tick) {
    QVObject3DTransformBase::updateDue(tick);
    if (Playback* const played = playback(); played && !hasLetters_) loadLetters(*played);
    if (hasLetters_) animation_.pose(tick.frame, *this, poses_);
}

void QVGLFontTextObjectBase::loadLetters(Playback& played) {
    LetterSettings settings =
        readLetterSettings(fontInfo_, sceneIdentifier(), sceneResourceFolderPath(), played);
    settings.text.part = animation_.part();
    const Made made = makeLetters(settings.text);
    offset_ = settings.offset(made.block);
    animation_.setParts(made.parts);
    if (!made.leftOut.empty())
        reportSkipped(*this, "letters that cannot be drawn", letterNames(made.leftOut));
    hasLetters_ = true;
}

void QVGLFontTextObjectBase::reloadLetters(int64_t frame) {
    Playback* const played = playback();
    if (!played || !hasLetters_) return;
    loadLetters(*played);
    animation_.pose(frame, *this, poses_);
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

glm::mat4 QVGLFontTextObjectBase::placed(const LetterPose& pose) const {
    return glm::translate(glm::mat4(1), offset_) * pose.matrix;
}

void QVGLFontTextObjectBase::addTraceFields(platform::Value::Dictionary& fields) {
    QVObject3DTransformBase::addTraceFields(fields);
    fields["values"] = platform::Value(
        platform::Value::Dictionary{{"renderAlpha", platform::Value(static_cast<double>(renderAlpha()))}});
}

}  // namespace multiscene
