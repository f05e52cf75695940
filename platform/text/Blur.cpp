#include "platform/text/Blur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace platform {

namespace {

constexpr int passes = 3;

/// Half widths of boxes that together have the deviation wanted: n boxes of width w have the variance
/// n (w^2 - 1) / 12.
std::array<int, passes> boxRadii(double deviation) {
    const double ideal = std::sqrt(12 * deviation * deviation / passes + 1);
    const int smaller = std::max(0, (int(ideal) - 1) / 2), width = 2 * smaller + 1;
    // Some passes take the next odd width, so that the sum of the variances comes out right.
    const double wanted = 12 * deviation * deviation;
    const double missing = wanted - passes * (double(width) * width - 1);
    const int larger = std::clamp(int(std::lround(missing / (4.0 * width + 4))), 0, passes);
    std::array<int, passes> radii{};
    for (int i = 0; i < passes; ++i) radii[size_t(i)] = i < larger ? smaller + 1 : smaller;
    return radii;
}

/// One 8-bit channel with tightly packed rows.
struct Channel {
    int width, height;
    std::vector<uint8_t> pixels;

    uint8_t* row(int y) { return &pixels[size_t(y) * size_t(width)]; }
    const uint8_t* row(int y) const { return &pixels[size_t(y) * size_t(width)]; }
};

void addRow(std::vector<float>& sums, const uint8_t* row, float sign) {
    for (size_t x = 0; x < sums.size(); ++x) sums[x] += sign * float(row[x]);
}

/// A moving mean over 2 * radius + 1 rows. Whole rows at a time, as that is what the processor does best; the
/// sums are whole numbers and so exact.
Channel boxBlurDown(const Channel& in, int radius) {
    Channel out{in.width, in.height, std::vector<uint8_t>(in.pixels.size())};
    std::vector<float> sums(size_t(in.width));
    const float share = 1.0f / float(2 * radius + 1);
    for (int y = 0; y < std::min(radius, in.height); ++y) addRow(sums, in.row(y), 1);
    for (int y = 0; y < in.height; ++y) {
        if (y + radius < in.height) addRow(sums, in.row(y + radius), 1);
        if (y - radius > 0) addRow(sums, in.row(y - radius - 1), -1);
        uint8_t* row = out.row(y);
        for (size_t x = 0; x < sums.size(); ++x) row[x] = uint8_t(sums[x] * share + 0.5f);
    }
    return out;
}

Channel transposed(const Channel& in) {
    Channel out{in.height, in.width, std::vector<uint8_t>(in.pixels.size())};
    constexpr int tile = 32;
    for (int top = 0; top < in.height; top += tile)
        for (int left = 0; left < in.width; left += tile)
            for (int x = left; x < std::min(left + tile, in.width); ++x)
                for (int y = top; y < std::min(top + tile, in.height); ++y) out.row(x)[y] = in.row(y)[x];
    return out;
}

}  // namespace

void blurChannel(uint8_t* pixels, int width, int height, int stride, double radius) {
    if (!(radius > 0.5) || width <= 0 || height <= 0) return;
    Channel channel{width, height, std::vector<uint8_t>(size_t(width) * size_t(height))};
    for (int y = 0; y < height; ++y) std::copy_n(pixels + ptrdiff_t(y) * stride, width, channel.row(y));
    const std::array<int, passes> radii = boxRadii(radius / 2);
    for (int direction = 0; direction < 2; ++direction) {
        for (const int box : radii)
            if (box > 0) channel = boxBlurDown(channel, box);
        channel = transposed(channel);
    }
    for (int y = 0; y < height; ++y) std::copy_n(channel.row(y), width, pixels + ptrdiff_t(y) * stride);
}

}  // namespace platform
