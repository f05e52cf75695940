#include "tween/QVTweenObject3DRotateItem.h"

namespace multiscene {

void QVTweenObject3DRotateItem::apply(const glm::vec3& degrees) {
    target()->setRotationX(degrees.x);
    target()->setRotationY(degrees.y);
    target()->setRotationZ(degrees.z);
}

}  // namespace multiscene
