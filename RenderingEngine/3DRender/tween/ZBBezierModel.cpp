#include "tween/ZBBezierModel.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "platform/base/Value.h"

namespace multiscene {

namespace {

/// The slot that a digit of the code names, or -1.
int slotOfDigit(int digit) { return digit >= 1 && digit <= 3 ? digit - 1 : -1; }

/// De Casteljau's reduction of one coordinate, in place of the working copy it is given.
double reduced(std::vector<double> points, double t) {
    for (size_t level = points.size() - 1; level >= 1; --level)
        for (size_t j = 0; j < level; ++j) points[j] = points[j] + t * points[j + 1] - t * points[j];
    return points[0];
}

struct Coordinates {
    std::vector<double> first, second;
};

Coordinates parsed(std::span<const std::string> controlPoints) {
    Coordinates coordinates;
    for (const std::string& point : controlPoints) {
        const size_t comma = point.find(',');
        const bool isPair = comma != std::string::npos;
        coordinates.first.push_back(isPair ? platform::Value(point.substr(0, comma)).floatValue() : 0);
        coordinates.second.push_back(isPair ? platform::Value(point.substr(comma + 1)).floatValue() : 0);
    }
    return coordinates;
}

void store(ZBBezierModel::Record& record, int digit, double value) {
    if (const int slot = slotOfDigit(digit); slot >= 0) record[static_cast<size_t>(slot)] = value;
}

}  // namespace

ZBBezierModel::ZBBezierModel(int64_t interpolationTotal)
    : bezierResult_(static_cast<size_t>(samplesFor(interpolationTotal))) {}

int64_t ZBBezierModel::samplesFor(int64_t interpolationTotal) {
    return std::clamp<int64_t>(interpolationTotal, 0, maxInterpolationTotal);
}

ZBBezierModel ZBBezierModel::bezierWithInterpolationTotal(int64_t interpolationTotal) {
    return ZBBezierModel(interpolationTotal);
}

void ZBBezierModel::computeBezierWithControlPoints(const std::vector<std::string>& controlPoints) {
    if (controlPoints.empty()) return bezierResult_.clear();
    const Coordinates coordinates =
        parsed(std::span(controlPoints).first(std::min(controlPoints.size(), maxControlPoints)));
    const auto total = static_cast<double>(bezierResult_.size());
    for (size_t i = 0; i < bezierResult_.size(); ++i) {
        // Single precision on purpose: the samples of existing templates were placed with it.
        const auto t = static_cast<float>(static_cast<double>(i) / total);
        store(bezierResult_[i], interpolationXYZ_ % 10, reduced(coordinates.first, t));
        store(bezierResult_[i], interpolationXYZ_ / 10, reduced(coordinates.second, t));
    }
}

ZBBezierModel::Record ZBBezierModel::recordAtTime(float time) const {
    if (bezierResult_.empty()) return {};
    if (time >= 0 && time <= 1) {
        const auto index = static_cast<size_t>(static_cast<float>(bezierResult_.size()) * time);
        if (index < bezierResult_.size()) return bezierResult_[index];
    }
    return bezierResult_.back();
}

}  // namespace multiscene
