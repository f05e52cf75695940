#include "tween/QVTweenObject3DPositionItem.h"

#include "tween/MotionPath.h"

namespace multiscene {

void QVTweenObject3DPositionItem::apply(const glm::vec3& position) {
    const auto coordinate = [&](int axis) {
        const float end = endVector3()[axis];
        return namesMotionPath(end) ? motionPathCoordinate(*target(), end, axis, easeValue())
                                    : position[axis];
    };
    target()->setX(coordinate(0));
    target()->setY(coordinate(1));
    target()->setZ(coordinate(2));
}

}  // namespace multiscene
