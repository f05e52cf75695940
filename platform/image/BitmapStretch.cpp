#include "platform/image/BitmapStretch.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace platform {

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

/// The pixels of one axis that a pixel of the result covers, in parts of it.
struct Covered {
    int first;
    std::vector<float> shares;
};

std::vector<Covered> coveredBy(int from, int to) {
    std::vector<Covered> all;
    const float step = static_cast<float>(from) / static_cast<float>(to);
    for (int place = 0; place < to; ++place) {
        const float start = static_cast<float>(place) * step, end = start + step;
        Covered covered{std::min(static_cast<int>(start), from - 1), {}};
        for (int at = covered.first; at < from && static_cast<float>(at) < end; ++at)
            covered.shares.push_back(
                (std::min(end, static_cast<float>(at + 1)) - std::max(start, static_cast<float>(at))) / step);
        all.push_back(std::move(covered));
    }
    return all;
}

}  // namespace

Bitmap averaged(const Bitmap& picture, ImageSize size) {
    Bitmap result(size.width, size.height);
    const auto columns = coveredBy(picture.width, size.width), rows = coveredBy(picture.height, size.height);
    uint8_t* out = result.rgba.data();
    for (const Covered& row : rows)
        for (const Covered& column : columns) {
            float sums[4] = {};
            for (size_t y = 0; y < row.shares.size(); ++y) {
                const uint8_t* pixel = picture.pixel(column.first, row.first + static_cast<int>(y));
                for (const float share : column.shares)
                    for (float& sum : sums) sum += share * row.shares[y] * static_cast<float>(*pixel++);
            }
            for (const float sum : sums) *out++ = static_cast<uint8_t>(std::min(255L, std::lround(sum)));
        }
    return result;
}

Bitmap stretched(const Bitmap& picture, ImageSize size) {
    Bitmap result(size.width, size.height);
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

}  // namespace platform
