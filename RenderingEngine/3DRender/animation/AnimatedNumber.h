#pragma once

#include "animation/KeyFrames.h"

namespace multiscene {

/// A number that the keys of an "AnimationInfo" move, as an opacity.
class AnimatedNumber {
  public:
    /// `value`: what it is before its first key.
    explicit AnimatedNumber(float value) : value_(value) {}

    /// The keys' dictionaries have the keys of `table`, which name the two ends.
    void read(const platform::Value::Array& keys, const KeyTable& table, const char* startKey,
              const char* endKey);
    void updateData(int64_t frame, const TweenTarget& easeTarget);

    float value() const { return value_; }
    void setValue(float value) { value_ = value; }

  private:
    float value_;
    KeyFrames<Move<float>> keys_;
};

}  // namespace multiscene
