#include "tween/QVTweenObject3DScaleItem.h"

namespace multiscene {

void QVTweenObject3DScaleItem::update(float time) {
    QVTweenItem::update(time);
    const glm::vec3 scale = startVector3_ + easeValue() * (endVector3_ - startVector3_);
    target()->setScaleX(scale.x);
    target()->setScaleY(scale.y);
    target()->setScaleZ(scale.z);
}

}  // namespace multiscene
