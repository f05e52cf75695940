#pragma once

#include <cstdint>

#include "core/KeyAnimationTarget.h"
#include "other/KeyTable.h"

namespace multiscene {

/// "sartFps", "endFps", "ease": what every key of an "AnimationInfo" list has besides its payload.
extern const KeyTable animationKeys;

/// Walks a list of keys by frame number and hands the eased progress to its target. The last frame of a key
/// is delivered, with progress 1, before the next key is loaded; a key that starts on that very frame is not
/// delivered on it. Render queue only.
class QVKeyAnimationOperators {
  public:
    /// The target outlives this. An empty list never calls it.
    QVKeyAnimationOperators(platform::Value::Array animationArray, KeyAnimationTarget& target);

    void updateData(int64_t frame);

    size_t currentTransformIndex() const { return currentTransformIndex_; }
    int64_t currentTransformSartFps() const { return currentTransformSartFps_; }
    int64_t currentTransformEndFps() const { return currentTransformEndFps_; }
    int32_t currentTransformEase() const { return currentTransformEase_; }

  private:
    void loadAnimatWithIndex(size_t index);

    KeyAnimationTarget& target_;
    platform::Value::Array animationArray_;
    size_t currentTransformIndex_ = 0;
    platform::Value currentTransformInfo_;
    int64_t currentTransformSartFps_ = 0, currentTransformEndFps_ = -1;
    int32_t currentTransformEase_ = 0;
};

}  // namespace multiscene
