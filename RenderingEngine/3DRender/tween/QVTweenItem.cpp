#include "tween/QVTweenItem.h"

#include <algorithm>

#include "tween/QVTween.h"

namespace multiscene {

QVTweenItem::QVTweenItem(std::shared_ptr<TweenTarget> target, float start, const TweenTiming& timing)
    : target_(std::move(target)),
      startTime_(start),
      // A forward and a backward pass together take the given duration.
      durationTime_(timing.reverses ? timing.duration / 2 : timing.duration),
      delayTime_(timing.delay),
      autoreverses_(timing.reverses),
      repeatCount_(timing.reverses ? timing.repeatCount * 2 : timing.repeatCount),
      tweenTpye_(timing.tweenTpye),
      easeType_(timing.ease),
      easeFunction_(isBezierEase(timing.ease) ? nullptr : multiscene::easeFunction(timing.ease)),
      currentTime_(start) {}

float QVTweenItem::progressAt(float time) const {
    if (isCurrentReverses_) time = 2 * startTime_ + delayTime_ + durationTime_ - time;
    const float elapsed = time - startTime_;
    if (elapsed <= delayTime_) return 0;
    return std::max(0.0f, (elapsed - delayTime_) / durationTime_);
}

void QVTweenItem::update(float time) {
    progressValue_ = std::min(1.0f, progressAt(tweenTpye_ == TweenType::Frames ? currentTime_ : time));
    finishCycleIfDue();
    reportProgress();
    currentTime_ += 1;
    easeValue_ = easeFunction_ ? easeFunction_(progressValue_)
                               : bezierEasing(progressValue_, easeType_, target_.get());
}

void QVTweenItem::finishCycleIfDue() {
    const bool cycleEnds = isCurrentReverses_ ? progressValue_ <= 0 : progressValue_ >= 1;
    if (!cycleEnds) return;
    if (autoreverses_) isCurrentReverses_ = !isCurrentReverses_;
    currentRepeatCount_ += 1;
    if (currentRepeatCount_ >= repeatCount_) {
        isComplete_ = true;
        if (finishBlock_) finishBlock_(*this);
    } else {
        startTime_ = currentTime_ = QVTween::getCurrentTime();
    }
}

void QVTweenItem::reportProgress() {
    if (!progressBlock_) return;
    float progress = progressValue_;
    if (isComplete_)
        progress = 1;
    else if (autoreverses_)
        progress = isCurrentReverses_ ? 0.5f * (2 - progressValue_) : 0.5f * progressValue_;
    progressBlock_(*this, progress);
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
