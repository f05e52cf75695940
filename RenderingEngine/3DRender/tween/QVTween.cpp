#include "tween/QVTween.h"

#include "tween/QVTweenObject3DPositionItem.h"
#include "tween/QVTweenObject3DRotateItem.h"
#include "tween/QVTweenObject3DScaleItem.h"

namespace multiscene {

namespace {

std::vector<std::unique_ptr<QVTweenItem>>& running() {
    static std::vector<std::unique_ptr<QVTweenItem>> items;
    return items;
}

template <typename Condition>
void removeWhere(Condition condition) {
    std::erase_if(running(), [&](const auto& item) { return condition(*item); });
}

}  // namespace

void QVTween::translationTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                            const glm::vec3& endVector3, const TweenTiming& timing) {
    running().push_back(
        std::make_unique<QVTweenObject3DPositionItem>(std::move(target), startVector3, endVector3, timing));
}

void QVTween::rotateTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                       const glm::vec3& endVector3, const TweenTiming& timing) {
    running().push_back(
        std::make_unique<QVTweenObject3DRotateItem>(std::move(target), startVector3, endVector3, timing));
}

void QVTween::scaleTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                      const glm::vec3& endVector3, const TweenTiming& timing) {
    running().push_back(
        std::make_unique<QVTweenObject3DScaleItem>(std::move(target), startVector3, endVector3, timing));
}

void QVTween::textureTramformTo(std::shared_ptr<TweenTarget> owner, glm::mat4* targetPointer,
                                const TextureWindow& from, const TextureWindow& to,
                                const TweenTiming& timing) {
    running().push_back(
        std::make_unique<QVTextureTranformItem>(std::move(owner), targetPointer, from, to, timing));
}

void QVTween::update() {
    removeWhere([](const QVTweenItem& item) { return item.isComplete(); });
    for (const auto& item : running()) item->update();
}

void QVTween::killTweenOf(const TweenTarget& object) {
    removeWhere([&](const QVTweenItem& item) { return item.isObjectTween() && item.target() == &object; });
}

void QVTween::killAllTweenOf(const TweenTarget& object) {
    removeWhere([&](const QVTweenItem& item) { return item.target() == &object; });
}

void QVTween::killTweenOfScene(const void* scene) {
    removeWhere(
        [&](const QVTweenItem& item) { return item.target() && item.target()->tweenScene() == scene; });
}

void QVTween::killAllTween() { running().clear(); }

const std::vector<std::unique_ptr<QVTweenItem>>& QVTween::items() { return running(); }

}  // namespace multiscene
