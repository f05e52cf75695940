#include "tween/VectorTweenItem.h"

namespace multiscene {

VectorTweenItem::VectorTweenItem(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                                 const glm::vec3& endVector3, const TweenTiming& timing)
    : QVTweenItem(std::move(target), timing), startVector3_(startVector3), endVector3_(endVector3) {}

void VectorTweenItem::update() {
    QVTweenItem::update();
    apply(startVector3_ + easeValue() * (endVector3_ - startVector3_));
}

}  // namespace multiscene
