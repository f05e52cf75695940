#include "pictureFilter/Filter.h"

#include <algorithm>
#include <cmath>

#include "platform/pixels/PictureFilter.h"

namespace multiscene {

FilteredSize filteredSize(int textureWidth, int textureHeight, const glm::vec2& pictureSize) {
    double width = textureWidth, height = textureHeight;
    const double shape = static_cast<double>(pictureSize.x) / static_cast<double>(pictureSize.y);
    constexpr double rounding = 0.02;
    if (shape > 0 && std::isfinite(shape) && std::abs(height * shape / width - 1) > rounding) {
        width = std::min(width, height * shape);
        height = width / shape;
    }
    const double fit = std::min(1.0, platform::kLongestFilteredSide / std::max(width, height));
    const auto side = [&](double length) {
        return std::clamp(static_cast<int>(std::lround(length * fit)), 1, platform::kLongestFilteredSide);
    };
    return {side(width), side(height)};
}

double blurOf(const Filter& filter, const FilteredSize& size) {
    return static_cast<double>(filter.type->blurred * filter.numbers[0]) * std::min(size.width, size.height);
}

float grainScale(const Filter& filter, const FilteredSize& size) {
    const float grain = filter.numbers[0] * static_cast<float>(std::min(size.width, size.height));
    constexpr float noisePixelsAGrain = 2;
    return std::min(noisePixelsAGrain / std::max(grain, 1e-3f), 1.0f);
}

}  // namespace multiscene
