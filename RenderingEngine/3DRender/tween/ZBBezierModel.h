#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/Limits.h"
#include "tween/TweenTarget.h"

namespace multiscene {

/// A Bézier curve of any degree, sampled once into a table. The samples run from t = 0 to (n − 1)/n: the
/// curve's last control point is never reached.
class ZBBezierModel {
  public:
    using Record =
        std::array<double, 4>;  ///< slot 0 = x, 1 = y, 2 = z; slots that the code does not name stay 0

    /// `interpolationTotal`: the number of samples, at least 0 and at most maxInterpolationTotal.
    static ZBBezierModel bezierWithInterpolationTotal(int64_t interpolationTotal);
    static constexpr int64_t maxInterpolationTotal = platform::limitOf<int64_t>("maxCurveSamples");
    /// So many samples a curve gets that asks for `interpolationTotal`.
    static int64_t samplesFor(int64_t interpolationTotal);
    /// Further points are left out: the work grows with the square of their number.
    static constexpr size_t maxControlPoints = platform::limitOf<size_t>("maxCurvePoints");

    /// Two-digit slot code: the units digit (1 x, 2 y, 3 z) receives a curve's first coordinate, the tens
    /// digit its second. Set it before computing; digits that name no slot are ignored.
    void setInterpolationXYZ(int32_t code) { interpolationXYZ_ = code; }
    int32_t interpolationXYZ() const { return interpolationXYZ_; }
    int64_t interpolationTotal() const { return static_cast<int64_t>(bezierResult_.size()); }

    /// Fills the table from control points "a,b" in curve order. A point with one piece or none counts as
    /// 0,0; a curve without points has no samples.
    void computeBezierWithControlPoints(const std::vector<std::string>& controlPoints);

    /// The record at `time` by index, not by coordinate; a time outside 0 to 1 gives the last one. An empty
    /// table gives zeros.
    Record recordAtTime(float time) const;

  private:
    explicit ZBBezierModel(int64_t interpolationTotal);

    std::vector<Record> bezierResult_;
    int32_t interpolationXYZ_ = 0;
};

}  // namespace multiscene
