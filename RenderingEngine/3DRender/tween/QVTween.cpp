#include "tween/QVTween.h"

#include "tween/QVTweenObject3DPositionItem.h"
#include "tween/QVTweenObject3DRotateItem.h"
#include "tween/QVTweenObject3DScaleItem.h"

namespace multiscene {

void QVTween::translationTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                            const glm::vec3& endVector3, const TweenTiming& timing) {
    items_.push_back(
        std::make_unique<QVTweenObject3DPositionItem>(std::move(target), startVector3, endVector3, timing));
}

void QVTween::rotateTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                       const glm::vec3& endVector3, const TweenTiming& timing) {
    items_.push_back(
        std::make_unique<QVTweenObject3DRotateItem>(std::move(target), startVector3, endVector3, timing));
}

void QVTween::scaleTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                      const glm::vec3& endVector3, const TweenTiming& timing) {
    items_.push_back(
        std::make_unique<QVTweenObject3DScaleItem>(std::move(target), startVector3, endVector3, timing));
}

void QVTween::textureTramformTo(std::shared_ptr<TweenTarget> owner, glm::mat4* targetPointer,
                                const TextureWindow& from, const TextureWindow& to,
                                const TweenTiming& timing) {
    items_.push_back(
        std::make_unique<QVTextureTranformItem>(std::move(owner), targetPointer, from, to, timing));
}

void QVTween::update() {
    std::erase_if(items_, [](const auto& item) { return item->isComplete(); });
    for (const auto& item : items_) item->update();
}

void QVTween::killTweenOf(const TweenTarget& object) {
    std::erase_if(items_,
                  [&](const auto& item) { return item->isObjectTween() && item->target() == &object; });
}

void QVTween::killAllTweenOf(const TweenTarget& object) {
    std::erase_if(items_, [&](const auto& item) { return item->target() == &object; });
}

void QVTween::killAllTween() { items_.clear(); }

}  // namespace multiscene
