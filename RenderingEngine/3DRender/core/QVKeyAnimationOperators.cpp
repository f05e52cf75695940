#include "core/QVKeyAnimationOperators.h"

#include "platform/base/Saturating.h"
#include "tween/QVTweenItem.h"

namespace multiscene {

using platform::saturatingDifference;

static constexpr Key animationKeyList[] = {
    {.name = "sartFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "first frame",
     .minimum = 0},
    {.name = "endFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "last frame, inclusive",
     .minimum = 0},
    {.name = "ease", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
};
const KeyTable animationKeys{"AnimationInfo", "One key of a key-frame list.", nullptr, animationKeyList};

QVKeyAnimationOperators::QVKeyAnimationOperators(platform::Value::Array animationArray,
                                                 KeyAnimationTarget& target)
    : target_(target), animationArray_(std::move(animationArray)) {
    loadAnimatWithIndex(0);
}

void QVKeyAnimationOperators::loadAnimatWithIndex(size_t index) {
    currentTransformIndex_ = index;
    if (index >= animationArray_.size()) return;
    currentTransformInfo_ = animationArray_[index];
    const KeyReader reader(animationKeys, currentTransformInfo_);
    currentTransformSartFps_ = reader.integer("sartFps");
    currentTransformEndFps_ = reader.integer("endFps");
    currentTransformEase_ = reader.int32("ease");
}

void QVKeyAnimationOperators::updateData(int64_t frame) {
    if (frame < currentTransformSartFps_ || frame > currentTransformEndFps_) return;
    const auto progress = static_cast<float>(
        static_cast<double>(saturatingDifference(frame, currentTransformSartFps_)) /
        static_cast<double>(saturatingDifference(currentTransformEndFps_, currentTransformSartFps_)));
    const float eased = QVTweenItem::easeValueWithEase(currentTransformEase_, progress, target_.easeTarget());
    target_.didNewKeyFrameWithEaseValue(eased, progress, currentTransformInfo_);
    if (frame == currentTransformEndFps_) loadAnimatWithIndex(currentTransformIndex_ + 1);
}

}  // namespace multiscene
