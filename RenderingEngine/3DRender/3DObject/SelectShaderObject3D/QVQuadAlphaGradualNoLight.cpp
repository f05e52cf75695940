#include "3DObject/SelectShaderObject3D/QVQuadAlphaGradualNoLight.h"

namespace multiscene {

static constexpr Key gradualAnimationKeyList[] = {
    {.name = "startStartAlpha",
     .type = KeyType::Vector2,
     .meaning = "first end at the start: place, opacity"},
    {.name = "endStartAlpha", .type = KeyType::Vector2, .meaning = "first end at the end: place, opacity"},
    {.name = "startAlphaEase", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
};
constexpr KeyTable gradualAnimationKeys{"AnimationInfo of a gradient", "A move of the gradient's first end.",
                                        &animationKeys, gradualAnimationKeyList};

static constexpr Key alphaGradualKeyList[] = {
    {.name = "startAlpha",
     .type = KeyType::Vector2,
     .fallback = "0,0",
     .meaning = "first end: place along the axis, opacity there"},
    {.name = "endAlpha",
     .type = KeyType::Vector2,
     .fallback = "0,0",
     .meaning = "second end: place along the axis, opacity there"},
    {.name = "interpolation",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "0 from left to right, 1 from top to bottom, 2 and 3 the same with soft ends",
     .minimum = 0,
     .maximum = 3},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "moves of the first end",
     .children = &gradualAnimationKeys},
};
const KeyTable alphaGradualKeys{"QVAlphaGradualNoLight", "An opacity that changes across the quad.", nullptr,
                                alphaGradualKeyList};

void QVQuadAlphaGradualNoLight::renderInfoWithDic(const platform::Value& info) {
    const KeyReader reader(alphaGradualKeys, info);
    startAlpha_ = reader.vector2("startAlpha");
    endAlpha_ = reader.vector2("endAlpha");
    interpolation_ = reader.int32("interpolation");
    keyAnimation_ = {reader.array("AnimationInfo"), [](const platform::Value& key) {
                         const KeyReader ends(gradualAnimationKeys, key);
                         return Move<glm::vec2>{ends.vector2("startStartAlpha"),
                                                ends.vector2("endStartAlpha"), ends.int32("startAlphaEase")};
                     }};
}

void QVQuadAlphaGradualNoLight::render(Painter& painter) {
    quad3DObject().drawWith(
        painter, GradientLook{.start = startAlpha_, .end = endAlpha_, .interpolation = interpolation_});
}

void QVQuadAlphaGradualNoLight::updateData(int64_t frame) {
    const TweenTarget* const curves = &quad3DObject();
    keyAnimation_.updateData(frame, curves, [&](const Move<glm::vec2>& move, const KeyProgress& progress) {
        startAlpha_ = move.easedAt(progress.linear, curves);
    });
}

void QVQuadAlphaGradualNoLight::addTraceValues(platform::Value::Dictionary& values) const {
    values["startAlpha"] =
        platform::Value(platform::Value::Array{platform::Value(static_cast<double>(startAlpha_.x)),
                                               platform::Value(static_cast<double>(startAlpha_.y))});
}

}  // namespace multiscene
