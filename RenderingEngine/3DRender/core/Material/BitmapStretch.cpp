#include "core/Material/BitmapStretch.h"

#include <algorithm>
#include <cmath>

namespace multiscene {

namespace {

/// The two pixels of one axis that a place lies between, and how far it is from the first.
struct Between {
    int first, second;
    float share;
};

Between between(int place, int from, int to) {
    const float at =
        (static_cast<float>(place) + 0.5f) * static_cast<float>(from) / static_cast<float>(to) - 0.5f;
    const int first = static_cast<int>(std::floor(at));
    return {std::clamp(first, 0, from - 1), std::clamp(first + 1, 0, from - 1),
            at - static_cast<float>(first)};
}

}  // namespace

platform::Bitmap stretched(const platform::Bitmap& picture, platform::ImageSize size) {
    platform::Bitmap result(size.width, size.height);
    uint8_t* out = result.rgba.data();
    for (int y = 0; y < size.height; ++y) {
        const Between rows = between(y, picture.height, size.height);
        for (int x = 0; x < size.width; ++x) {
            const Between columns = between(x, picture.width, size.width);
            const uint8_t* corners[] = {
                picture.pixel(columns.first, rows.first), picture.pixel(columns.second, rows.first),
                picture.pixel(columns.first, rows.second), picture.pixel(columns.second, rows.second)};
            for (int channel = 0; channel < 4; ++channel) {
                const float upper = std::lerp(static_cast<float>(corners[0][channel]),
                                              static_cast<float>(corners[1][channel]), columns.share);
                const float lower = std::lerp(static_cast<float>(corners[2][channel]),
                                              static_cast<float>(corners[3][channel]), columns.share);
                *out++ = static_cast<uint8_t>(std::lround(std::lerp(upper, lower, rows.share)));
            }
        }
    }
    return result;
}

}  // namespace multiscene
