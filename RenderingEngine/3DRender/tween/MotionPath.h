#pragma once

#include <string>

#include "platform/base/Value.h"
#include "tween/TweenTarget.h"

namespace multiscene {

/// An end position of this size or more is the name of a path, not a coordinate.
constexpr float firstMotionPath = 30000;

inline bool namesMotionPath(float endValue) { return endValue >= firstMotionPath; }

/// The path that an end position names: a whole number. What no 32-bit number can hold saturates.
inline std::string motionPathName(float endValue) {
    return std::to_string(platform::Value(static_cast<double>(endValue)).intValue());
}

/// The coordinate (slot 0 x, 1 y, 2 z) of the path that `name` spells as a whole number, at `time`.
inline float motionPathCoordinate(const TweenTarget& target, float name, int slot, float time) {
    const BezierSample sample = target.bezierResultWithTime(time, motionPathName(name));
    return static_cast<float>(sample.slots[static_cast<size_t>(slot)]);
}

}  // namespace multiscene
