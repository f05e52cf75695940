#include "tween/QVTweenObject3DRotateItem.h"

namespace multiscene {

void QVTweenObject3DRotateItem::update(float time) {
    QVTweenItem::update(time);
    const glm::vec3 rotation = startVector3_ + easeValue() * (endVector3_ - startVector3_);
    target()->setRotationX(rotation.x);
    target()->setRotationY(rotation.y);
    target()->setRotationZ(rotation.z);
}

}  // namespace multiscene
