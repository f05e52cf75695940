#include "app/job/PhotoPart.h"

#include <algorithm>
#include <cmath>

namespace multiscene {

namespace {

constexpr double kRounding = 1e-6;
constexpr double kMostShare = 16;  // a panorama that is turned by a right angle is many times as wide as high
constexpr double kMostAngle = 360;

bool isWithin(double number, double least, double most) {
    return number >= least - kRounding && number <= most + kRounding;
}

}  // namespace

std::optional<platform::PhotoCrop> photoPart(double x, double y, double width, double height, double angle) {
    if (!(width > 0 && height > 0)) return std::nullopt;
    if (angle == 0) {
        const bool isInside =
            isWithin(x, 0, 1) && isWithin(y, 0, 1) && isWithin(x + width, 0, 1) && isWithin(y + height, 0, 1);
        if (!isInside) return std::nullopt;
        return platform::PhotoCrop{platform::PhotoCrop::Kind::Part, std::clamp(x, 0.0, 1.0),
                                   std::clamp(y, 0.0, 1.0), width, height};
    }
    const bool isUsable = isWithin(x + width / 2, 0, 1) && isWithin(y + height / 2, 0, 1) &&
                          width <= kMostShare && height <= kMostShare && std::abs(angle) <= kMostAngle;
    if (!isUsable) return std::nullopt;
    return platform::PhotoCrop{platform::PhotoCrop::Kind::Part, x, y, width, height, angle};
}

}  // namespace multiscene
