#include "platform/pixels/GrainNoise.h"

#include <algorithm>
#include <vector>

namespace platform {

namespace {

constexpr uint32_t kSide = 256;

uint32_t hash(uint32_t number) {
    number = (number ^ (number >> 16)) * 0x7FEB352Du;
    number = (number ^ (number >> 15)) * 0x846CA68Bu;
    return number ^ (number >> 16);
}

// The sum of its bytes is spread nearly as a bell curve: 0 to 1020.
int spread(uint32_t place) {
    const uint32_t bytes = hash(place);
    return static_cast<int>((bytes & 255) + (bytes >> 8 & 255) + (bytes >> 16 & 255) + (bytes >> 24));
}

// Soft grains: looked at between its pixels, hard ones would show the grid that they lie on.
int softened(const std::vector<int>& levels, uint32_t x, uint32_t y) {
    constexpr int weights[] = {1, 2, 1};
    int sum = 0;
    for (uint32_t down = 0; down < 3; ++down)
        for (uint32_t across = 0; across < 3; ++across)
            sum += weights[down] * weights[across] *
                   levels[(y + down + kSide - 1) % kSide * kSide + (x + across + kSide - 1) % kSide];
    return sum;  // of 16
}

std::vector<uint8_t> makeNoise() {
    constexpr int kMean = 510 * 16, kGain = 10;  // softening takes contrast away
    std::vector<int> levels;
    for (uint32_t place = 0; place < kSide * kSide; ++place) levels.push_back(spread(place));
    std::vector<uint8_t> pixels;
    for (uint32_t y = 0; y < kSide; ++y)
        for (uint32_t x = 0; x < kSide; ++x) {
            const int away = (softened(levels, x, y) - kMean) * kGain / 256;
            const auto level = static_cast<uint8_t>(std::clamp(128 + away, 0, 255));
            pixels.insert(pixels.end(), {level, level, level, 255});
        }
    return pixels;
}

}  // namespace

Surface grainNoise() {
    static const std::vector<uint8_t> pixels = makeNoise();
    return {.pixels = pixels.data(), .stride = kSide * 4, .width = kSide, .height = kSide, .opaque = true};
}

std::array<float, 2> grainShift(int64_t frame) {
    const uint32_t shift = hash(static_cast<uint32_t>(frame));
    return {static_cast<float>(shift % kSide), static_cast<float>(shift / kSide % kSide)};
}

}  // namespace platform
