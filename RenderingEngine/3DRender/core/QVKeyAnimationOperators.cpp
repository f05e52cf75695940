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

QVKeyAnimationOperators::QVKeyAnimationOperators(const platform::Value::Array& animationArray) {
    for (const platform::Value& key : animationArray) {
        const KeyReader reader(animationKeys, key);
        keys_.push_back({.sartFps = reader.integer("sartFps"),
                         .endFps = reader.integer("endFps"),
                         .ease = reader.int32("ease")});
    }
}

std::optional<KeyProgress> QVKeyAnimationOperators::updateData(int64_t frame, const TweenTarget* easeTarget) {
    if (keys_.empty()) return std::nullopt;
    const size_t shown = loaded_;
    const Key& key = keys_[shown];
    if (frame < key.sartFps || frame > key.endFps) return std::nullopt;
    if (frame == key.endFps && loaded_ + 1 < keys_.size()) ++loaded_;
    const auto progress =
        static_cast<float>(static_cast<double>(saturatingDifference(frame, key.sartFps)) /
                           static_cast<double>(saturatingDifference(key.endFps, key.sartFps)));
    return KeyProgress{shown, QVTweenItem::easeValueWithEase(key.ease, progress, easeTarget), progress};
}

}  // namespace multiscene
