#include "tween/QVTween.h"

#include "platform/base/Clock.h"
#include "tween/QVTweenObject3DPositionItem.h"
#include "tween/QVTweenObject3DRotateItem.h"
#include "tween/QVTweenObject3DScaleItem.h"

namespace multiscene {

namespace {

struct Engine {
    std::vector<std::unique_ptr<QVTweenItem>> items;
    double referenceTime = platform::monotonicSeconds();
};

Engine& engine() {
    static Engine instance;
    return instance;
}

float startTime(const TweenTiming& timing) {
    return timing.tweenTpye == TweenType::Seconds ? QVTween::getCurrentTime() : 0;
}

QVTweenItem& added(std::unique_ptr<QVTweenItem> item) {
    return *engine().items.emplace_back(std::move(item));
}

template <typename Item>
QVTweenItem& addedVectorTween(std::shared_ptr<TweenTarget> target, const glm::vec3& start,
                              const glm::vec3& end, const TweenTiming& timing) {
    return added(std::make_unique<Item>(std::move(target), start, end, startTime(timing), timing));
}

template <typename Condition>
void removeWhere(Condition condition) {
    std::erase_if(engine().items, [&](const auto& item) { return condition(*item); });
}

}  // namespace

QVTweenItem& QVTween::translationTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                                    const glm::vec3& endVector3, const TweenTiming& timing) {
    return addedVectorTween<QVTweenObject3DPositionItem>(std::move(target), startVector3, endVector3, timing);
}

QVTweenItem& QVTween::rotateTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                               const glm::vec3& endVector3, const TweenTiming& timing) {
    return addedVectorTween<QVTweenObject3DRotateItem>(std::move(target), startVector3, endVector3, timing);
}

QVTweenItem& QVTween::scaleTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                              const glm::vec3& endVector3, const TweenTiming& timing) {
    return addedVectorTween<QVTweenObject3DScaleItem>(std::move(target), startVector3, endVector3, timing);
}

QVTweenItem& QVTween::textureTramformTo(std::shared_ptr<TweenTarget> owner, glm::mat4* targetPointer,
                                        const TextureWindow& from, const TextureWindow& to,
                                        const TweenTiming& timing) {
    return added(std::make_unique<QVTextureTranformItem>(std::move(owner), targetPointer, from, to,
                                                         startTime(timing), timing));
}

void QVTween::update() {
    removeWhere([](const QVTweenItem& item) { return item.isComplete(); });
    const float time = getCurrentTime();
    auto& items = engine().items;
    // By index: a block may start further tweens.
    for (size_t i = 0; i < items.size(); ++i) items[i]->update(time);
}

void QVTween::killTweenOf(const TweenTarget& object) {
    removeWhere([&](const QVTweenItem& item) { return item.isObjectTween() && item.target() == &object; });
}

void QVTween::killTweenOf(const QVTweenItem& item, const std::string& name) {
    removeWhere([&](const QVTweenItem& other) { return &other == &item && other.itmeName() == name; });
}

void QVTween::killTween(const QVTweenItem& item) {
    removeWhere([&](const QVTweenItem& other) { return &other == &item; });
}

void QVTween::killAllTweenOf(const TweenTarget& object) {
    removeWhere([&](const QVTweenItem& item) { return item.target() == &object; });
}

void QVTween::killTweenOfScene(const void* scene) {
    removeWhere(
        [&](const QVTweenItem& item) { return item.target() && item.target()->tweenScene() == scene; });
}

void QVTween::killAllTween() { engine().items.clear(); }

float QVTween::getCurrentTime() {
    return static_cast<float>(platform::monotonicSeconds() - engine().referenceTime);
}

const std::vector<std::unique_ptr<QVTweenItem>>& QVTween::items() { return engine().items; }

}  // namespace multiscene
