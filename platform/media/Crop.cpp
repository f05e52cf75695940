#include "platform/media/Crop.h"

#include <algorithm>
#include <cmath>

namespace platform {

CropSize cropSize(int width, int height, const PictureShape& shape) {
    if (shape.width < 1 || shape.height < 1) return {width, height};
    const double wanted = static_cast<double>(shape.width) / shape.height;
    const auto side = [](double length, int most) {
        return static_cast<int>(std::clamp<double>(std::round(length), 1, most));
    };
    if (width > height * wanted) return {side(height * wanted, width), height};
    return {width, side(width / wanted, height)};
}

PictureShape PixelShape::measured(const PictureShape& shape) const {
    if (isSquare() || shape.width < 1 || shape.height < 1) return shape;
    constexpr double most = 1 << 30;
    const double across = static_cast<double>(shape.width) * height,
                 down = static_cast<double>(shape.height) * width;
    // Two whole numbers in that proportion.
    const double scale = std::min(1.0, most / std::max(across, down));
    return {std::max(static_cast<int>(std::round(across * scale)), 1),
            std::max(static_cast<int>(std::round(down * scale)), 1)};
}

int PixelShape::widthOf(int stored) const {
    return static_cast<int>(std::max(std::round(static_cast<double>(stored) * width / height), 1.0));
}

}  // namespace platform
