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

}  // namespace platform
