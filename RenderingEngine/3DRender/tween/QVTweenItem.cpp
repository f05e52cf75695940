#include "tween/QVTweenItem.h"

#include <algorithm>
#include <utility>

namespace multiscene {

QVTweenItem::QVTweenItem(std::shared_ptr<TweenTarget> target, const TweenTiming& timing)
    : target_(std::move(target)), timing_(timing) {}

void QVTweenItem::update() {
    const float progress = currentTime_ > 0 ? std::clamp(currentTime_ / timing_.duration, 0.0f, 1.0f) : 0;
    isComplete_ = progress >= 1;
    currentTime_ += 1;
    easeValue_ = easeValueWithEase(timing_.ease, progress, target_.get());
}

float QVTweenItem::easeValueWithEase(int32_t ease, float progressValue, const TweenTarget* target) {
    if (isBezierEase(ease)) return bezierEasing(progressValue, ease, target);
    return multiscene::easeFunction(ease)(progressValue);
}

float QVTweenItem::bezierEasing(float progressValue, int32_t ease, const TweenTarget* object3D) {
    if (!object3D) return progressValue;
    const BezierSample sample = object3D->bezierResultWithTime(progressValue, std::to_string(ease));
    return sample.isHas ? static_cast<float>(sample.slots[1]) : progressValue;
}

}  // namespace multiscene
