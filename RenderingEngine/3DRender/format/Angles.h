#pragma once

namespace multiscene {

/// The format's own short constants, not pi/180 and 180/pi: templates are tuned to them.
constexpr double radiansPerDegree = 0.0174533;
constexpr double degreesPerRadian = 57.29583;

inline float toRadians(float degrees) { return static_cast<float>(degrees * radiansPerDegree); }
inline float toDegrees(float radians) { return static_cast<float>(radians * degreesPerRadian); }

}  // namespace multiscene
