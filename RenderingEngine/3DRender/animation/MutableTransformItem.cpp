#include "animation/MutableTransformItem.h"

#include <array>
#include <glm/gtc/matrix_transform.hpp>

#include "animation/TransformItemKeys.h"
#include "format/Angles.h"
#include "platform/base/Saturating.h"
#include "tween/MotionPath.h"

namespace multiscene {

namespace {

/// What an item of each type reads, in the order of the types.
struct TypeKeys {
    const KeyTable* table;
    const char *start, *end, *ease;
};
constexpr std::array<TypeKeys, 3> typeKeys{
    {{&mutableTranslateKeys, "startTranslate", "endTranslate", "iTranslate"},
     {&mutableScaleKeys, "startScale", "endScale", "iScale"},
     {&mutableRotateKeys, "startRotate", "endRotate", "iRotate"}}};

glm::mat4 translated(const glm::mat4& matrix, const Move<glm::vec3>& move, float eased,
                     const TweenTarget& target) {
    glm::vec3 offset = move.at(eased);
    // A path along z is looked up under the name that y gives: both share one curve.
    const std::array<float, 3> names{move.end.x, move.end.y, move.end.y};
    for (int axis = 0; axis < 3; ++axis)
        if (namesMotionPath(move.end[axis]))
            offset[axis] = motionPathCoordinate(target, names[static_cast<size_t>(axis)], axis, eased);
    return glm::translate(matrix, offset);
}

glm::mat4 rotated(const glm::mat4& matrix, const glm::vec3& degrees) {
    glm::mat4 turned = glm::rotate(matrix, toRadians(degrees.x), glm::vec3(1, 0, 0));
    turned = glm::rotate(turned, toRadians(degrees.y), glm::vec3(0, 1, 0));
    return glm::rotate(turned, toRadians(degrees.z), glm::vec3(0, 0, 1));
}

}  // namespace

std::optional<MutableTransformItem> MutableTransformItem::read(const platform::Value& item) {
    const KeyReader reader(mutableItemKeys, item);
    const int64_t type = reader.integer("transformType");
    if (type < 0 || type >= static_cast<int64_t>(typeKeys.size())) return std::nullopt;
    const TypeKeys& keys = typeKeys[static_cast<size_t>(type)];
    const KeyReader ofType(*keys.table, item);
    return MutableTransformItem{
        .type = static_cast<Type>(type),
        .fpsStart = reader.integer("fpsStart"),
        .fpsEnd = reader.integer("fpsEnd"),
        .move = {ofType.vector3(keys.start), ofType.vector3(keys.end), ofType.int32(keys.ease)}};
}

/// An item of one frame has the progress 0/0, which is passed on as it is.
glm::mat4 MutableTransformItem::appliedTo(const glm::mat4& matrix, int32_t frame,
                                          const TweenTarget& target) const {
    if (frame < fpsStart || frame > fpsEnd) return matrix;
    const auto progress = static_cast<float>(platform::saturatingDifference(frame, fpsStart)) /
                          static_cast<float>(platform::saturatingDifference(fpsEnd, fpsStart));
    const float eased = QVTweenItem::easeValueWithEase(move.ease, progress, &target);
    switch (type) {
        case Type::Translate:
            return translated(matrix, move, eased, target);
        case Type::Scale:
            return glm::scale(matrix, move.at(eased));
        case Type::Rotate:
            return rotated(matrix, move.at(eased));
    }
    return matrix;
}

}  // namespace multiscene
