#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace multiscene {

/// One sample of a motion path.
struct BezierSample {
    std::array<double, 4> slots{};  ///< 0 = x, 1 = y, 2 = z
    int32_t interpolationXYZ = 0;   ///< the path's slot code
    bool isHas = false;             ///< false: the object has no such path and the slots are 0
};

/// What tweens move: an object with a placement and a registry of motion paths.
class TweenTarget {
  public:
    virtual ~TweenTarget() = default;

    virtual void setX(float x) = 0;
    virtual void setY(float y) = 0;
    virtual void setZ(float z) = 0;
    virtual void setRotationX(float degrees) = 0;
    virtual void setRotationY(float degrees) = 0;
    virtual void setRotationZ(float degrees) = 0;
    virtual void setScaleX(float scale) = 0;
    virtual void setScaleY(float scale) = 0;
    virtual void setScaleZ(float scale) = 0;

    /// The path named `bezierIdentifier` at `time`, 0 to 1. Any other time gives the last sample.
    virtual BezierSample bezierResultWithTime(float time, const std::string& bezierIdentifier) const = 0;
};

}  // namespace multiscene
