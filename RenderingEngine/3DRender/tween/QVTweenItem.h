#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tween/Ease.h"
#include "tween/TweenTarget.h"

namespace multiscene {

enum class TweenType : int32_t { Seconds = 0, Frames = 1 };

/// The timing that every tween shares. Durations are frames for TweenType::Frames, else seconds.
struct TweenTiming {
    float duration = 0;
    float delay = 0;
    bool reverses = false;
    float repeatCount = 1;
    int32_t ease = 0;
    TweenType tweenTpye = TweenType::Frames;
};

/// Turns time into an eased value; subclasses apply it. Lives on the render queue.
class QVTweenItem {
  public:
    using ProgressBlock = std::function<void(QVTweenItem&, float progress)>;
    using FinishBlock = std::function<void(QVTweenItem&)>;

    /// `target` is what the item moves, or, for a texture tween, only what its path and life depend on.
    QVTweenItem(std::shared_ptr<TweenTarget> target, float start, const TweenTiming& timing);
    virtual ~QVTweenItem() = default;
    QVTweenItem(const QVTweenItem&) = delete;
    QVTweenItem& operator=(const QVTweenItem&) = delete;

    /// One step. `time` is seconds since the tween engine started; frame-counted items use their own clock.
    virtual void update(float time);

    TweenTarget* target() const { return target_.get(); }
    /// True for items that killTweenOf() finds by their target; a texture tween writes memory and has none.
    virtual bool isObjectTween() const { return true; }
    const std::string& itmeName() const { return itmeName_; }
    void setItmeName(const std::string& name) { itmeName_ = name; }
    /// The blocks run within the step of all tweens: they may start tweens but not kill any.
    void setProgressBlock(ProgressBlock block) { progressBlock_ = std::move(block); }
    void setFinishBlock(FinishBlock block) { finishBlock_ = std::move(block); }
    bool isComplete() const { return isComplete_; }
    float progressValue() const { return progressValue_; }  ///< linear, 0 to 1
    float easeValue() const { return easeValue_; }
    float startTime() const { return startTime_; }
    float durationTime() const { return durationTime_; }

    /// The one ease function: ids by table, further ones up to 29999 linear, the others (negative ones too)
    /// by the target's Bézier curve of that name, or linear when there is none.
    static float easeValueWithEase(int32_t ease, float progressValue, const TweenTarget* target);
    static float bezierEasing(float progressValue, int32_t ease, const TweenTarget* object3D);

  private:
    float progressAt(float time) const;
    void finishCycleIfDue();
    void reportProgress();

    std::shared_ptr<TweenTarget> target_;
    std::string itmeName_;
    float startTime_, durationTime_, delayTime_;
    bool autoreverses_;
    float repeatCount_;
    TweenType tweenTpye_;
    int32_t easeType_;
    EaseFunction easeFunction_;
    bool isComplete_ = false;
    float currentTime_;
    float currentRepeatCount_ = 0;
    bool isCurrentReverses_ = false;
    float progressValue_ = 0;
    float easeValue_ = 0;
    ProgressBlock progressBlock_;
    FinishBlock finishBlock_;
};

}  // namespace multiscene
