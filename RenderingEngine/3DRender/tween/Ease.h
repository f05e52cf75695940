#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace multiscene {

/// An ease maps linear progress, 0 to 1, to eased progress. It may overshoot in between.
using EaseFunction = float (*)(float progress);

struct Ease {
    std::string_view name;
    EaseFunction function;
};

/// The eases by id, from 0 on. Adding one is a function and a line in Ease.cpp.
std::span<const Ease> easeTable();

/// Ids from here on, and negative ones, name a Bézier curve of the object.
constexpr uint32_t firstBezierEase = 30000;

inline bool isBezierEase(int32_t ease) { return static_cast<uint32_t>(ease) >= firstBezierEase; }

/// The function of an id below 30000; ids beyond the table are linear.
EaseFunction easeFunction(int32_t ease);

}  // namespace multiscene
