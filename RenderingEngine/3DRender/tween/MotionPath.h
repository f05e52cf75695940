#pragma once

#include <cstdint>
#include <string>

#include "tween/TweenTarget.h"

namespace multiscene {

/// An end position of this size or more is the name of a path, not a coordinate.
constexpr float firstMotionPath = 30000;

inline bool namesMotionPath(float endValue) { return endValue >= firstMotionPath; }

/// The coordinate (slot 0 x, 1 y, 2 z) of the path that `name` spells as a whole number, at `time`.
inline float motionPathCoordinate(const TweenTarget& target, float name, int slot, float time) {
    const std::string identifier = std::to_string(static_cast<int64_t>(name));
    return static_cast<float>(target.bezierResultWithTime(time, identifier).slots[static_cast<size_t>(slot)]);
}

}  // namespace multiscene
