#include "tween/QVTweenObject3DPositionItem.h"

#include "tween/MotionPath.h"

namespace multiscene {

void QVTweenObject3DPositionItem::update(float time) {
    QVTweenItem::update(time);
    glm::vec3 position = startVector3_ + easeValue() * (endVector3_ - startVector3_);
    for (int axis = 0; axis < 3; ++axis)
        if (namesMotionPath(endVector3_[axis]))
            position[axis] = motionPathCoordinate(*target(), endVector3_[axis], axis, easeValue());
    target()->setX(position.x);
    target()->setY(position.y);
    target()->setZ(position.z);
}

}  // namespace multiscene
