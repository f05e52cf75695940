#pragma once

#include <string>

#include "platform/base/Value.h"
#include "tween/TweenTarget.h"

namespace multiscene {

/// What a key-frame driver animates.
class KeyAnimationTarget {
  public:
    virtual ~KeyAnimationTarget() = default;

    /// `easeValue` is the eased progress, `progressValue` the linear one, `animationInfo` the loaded key.
    virtual void didNewKeyFrameWithEaseValue(float easeValue, float progressValue,
                                             const platform::Value& animationInfo) = 0;
    /// Whose Bézier curves the eases of 30000 and above name; null when the target has none.
    virtual const TweenTarget* easeTarget() const { return nullptr; }
};

}  // namespace multiscene
