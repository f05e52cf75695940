#pragma once

#include <memory>

#include "tween/Ease.h"
#include "tween/TweenTarget.h"

namespace multiscene {

/// The timing that every tween shares.
struct TweenTiming {
    float duration = 0;  ///< frames
    int32_t ease = 0;
};

/// Turns the frames since its start into an eased value; subclasses apply it. Lives on the render queue.
class QVTweenItem {
  public:
    /// `target` is what the item moves, or, for a texture tween, only what its path and life depend on.
    QVTweenItem(std::shared_ptr<TweenTarget> target, const TweenTiming& timing);
    virtual ~QVTweenItem() = default;
    QVTweenItem(const QVTweenItem&) = delete;
    QVTweenItem& operator=(const QVTweenItem&) = delete;

    /// One frame; the first has the progress 0.
    virtual void update();

    TweenTarget* target() const { return target_.get(); }
    /// True for items that killTweenOf() finds by their target; a texture tween writes memory and has none.
    virtual bool isObjectTween() const { return true; }
    bool isComplete() const { return isComplete_; }
    float easeValue() const { return easeValue_; }

    /// The one ease function: ids by table, further ones up to 29999 linear, the others (negative ones too)
    /// by the target's Bézier curve of that name, or linear when there is none.
    static float easeValueWithEase(int32_t ease, float progressValue, const TweenTarget* target);
    static float bezierEasing(float progressValue, int32_t ease, const TweenTarget* object3D);

  private:
    std::shared_ptr<TweenTarget> target_;
    TweenTiming timing_;
    float currentTime_ = 0;  // frames
    bool isComplete_ = false;
    float easeValue_ = 0;
};

}  // namespace multiscene
