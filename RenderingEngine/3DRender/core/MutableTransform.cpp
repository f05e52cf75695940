// The items of "MutableTransformArray": evaluated from the frame number alone, nothing is kept between
// frames.
#include <array>
#include <glm/gtc/matrix_transform.hpp>
#include <optional>

#include "core/Angles.h"
#include "core/QVObject3DTransformBase.h"
#include "core/TransformItemKeys.h"
#include "platform/base/Saturating.h"
#include "tween/MotionPath.h"
#include "tween/QVTweenItem.h"

namespace multiscene {

namespace {

/// The eased progress of an item at a frame, or nothing outside its frames. An item of one frame gives 0/0,
/// which is passed on as it is.
std::optional<float> easedProgress(const platform::Value& item, int32_t frame, int32_t ease,
                                   const TweenTarget* target) {
    const KeyReader reader(mutableItemKeys, item);
    const int64_t start = reader.integer("fpsStart"), end = reader.integer("fpsEnd");
    if (frame < start || frame > end) return std::nullopt;
    const auto progress = static_cast<float>(platform::saturatingDifference(frame, start)) /
                          static_cast<float>(platform::saturatingDifference(end, start));
    return QVTweenItem::easeValueWithEase(ease, progress, target);
}

glm::vec3 between(const glm::vec3& start, const glm::vec3& end, float eased) {
    return start + eased * (end - start);
}

}  // namespace

glm::mat4 QVObject3DTransformBase::computeTranslate(const platform::Value& item, const glm::mat4& matrix,
                                                    int32_t frame, const TweenTarget* target) {
    const KeyReader reader(mutableTranslateKeys, item);
    const auto eased = easedProgress(item, frame, reader.int32("iTranslate"), target);
    if (!eased) return matrix;
    const glm::vec3 end = reader.vector3("endTranslate");
    glm::vec3 offset = between(reader.vector3("startTranslate"), end, *eased);
    // A path along z is looked up under the name that y gives: both share one curve.
    const std::array<float, 3> names{end.x, end.y, end.y};
    for (int axis = 0; axis < 3; ++axis)
        if (namesMotionPath(end[axis]) && target)
            offset[axis] = motionPathCoordinate(*target, names[static_cast<size_t>(axis)], axis, *eased);
    return glm::translate(matrix, offset);
}

glm::mat4 QVObject3DTransformBase::computeScale(const platform::Value& item, const glm::mat4& matrix,
                                                int32_t frame, const TweenTarget* target) {
    const KeyReader reader(mutableScaleKeys, item);
    const auto eased = easedProgress(item, frame, reader.int32("iScale"), target);
    if (!eased) return matrix;
    return glm::scale(matrix, between(reader.vector3("startScale"), reader.vector3("endScale"), *eased));
}

glm::mat4 QVObject3DTransformBase::computeRotate(const platform::Value& item, const glm::mat4& matrix,
                                                 int32_t frame, const TweenTarget* target) {
    const KeyReader reader(mutableRotateKeys, item);
    const auto eased = easedProgress(item, frame, reader.int32("iRotate"), target);
    if (!eased) return matrix;
    const glm::vec3 degrees = between(reader.vector3("startRotate"), reader.vector3("endRotate"), *eased);
    glm::mat4 rotated = glm::rotate(matrix, toRadians(degrees.x), glm::vec3(1, 0, 0));
    rotated = glm::rotate(rotated, toRadians(degrees.y), glm::vec3(0, 1, 0));
    return glm::rotate(rotated, toRadians(degrees.z), glm::vec3(0, 0, 1));
}

void QVObject3DTransformBase::refushMutableTransformWithFps(int32_t frame) {
    using Compute = glm::mat4 (*)(const platform::Value&, const glm::mat4&, int32_t, const TweenTarget*);
    static constexpr std::array<Compute, 3> byType{computeTranslate, computeScale, computeRotate};
    glm::mat4 matrix(1);
    for (const platform::Value& item : mutableTransformArray_) {
        const int64_t type = item.integer("transformType");
        if (type >= 0 && type < static_cast<int64_t>(byType.size()))
            matrix = byType[static_cast<size_t>(type)](item, matrix, frame, this);
    }
    setupMutableTransform(matrix);
}

}  // namespace multiscene
