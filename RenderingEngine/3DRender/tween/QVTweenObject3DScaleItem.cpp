#include "tween/QVTweenObject3DScaleItem.h"

namespace multiscene {

void QVTweenObject3DScaleItem::apply(const glm::vec3& scale) {
    target()->setScaleX(scale.x);
    target()->setScaleY(scale.y);
    target()->setScaleZ(scale.z);
}

}  // namespace multiscene
