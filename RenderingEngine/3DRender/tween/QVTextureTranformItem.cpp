#include "tween/QVTextureTranformItem.h"

namespace multiscene {

void QVTextureTranformItem::update() {
    QVTweenItem::update();
    const glm::vec2 size = from_.size + easeValue() * (to_.size - from_.size);
    const glm::vec2 origin = from_.origin + easeValue() * (to_.origin - from_.origin);
    glm::mat4& matrix = *targetPointer_;
    matrix[0][0] = size.x;
    matrix[1][1] = size.y;
    matrix[3][0] = origin.x;
    matrix[3][1] = origin.y;
}

}  // namespace multiscene
