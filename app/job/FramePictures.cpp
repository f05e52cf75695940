#include "app/job/FramePictures.h"

#include <algorithm>

#include "platform/base/Clock.h"
#include "platform/base/Error.h"
#include "platform/image/ImageWriter.h"

namespace multiscene {

namespace {

constexpr int kSide = 360;       // pixels of the shorter side, about
constexpr double kInterval = 1;  // seconds
constexpr int kQuality = 75;

/// The mean of `step` times `step` pixels, as red, green, blue; a film has no alpha.
void averageBlock(const platform::Surface& from, int x, int y, int step, uint8_t* to) {
    int sums[3] = {};
    for (int row = 0; row < step; ++row) {
        const uint8_t* pixel = from.pixels + (y * step + row) * from.stride + ptrdiff_t{x} * step * 4;
        for (int column = 0; column < step; ++column, pixel += 4)
            for (int colour = 0; colour < 3; ++colour) sums[colour] += pixel[2 - colour];
    }
    for (int colour = 0; colour < 3; ++colour)
        to[colour] = static_cast<uint8_t>(sums[colour] / (step * step));
    to[3] = 255;
}

platform::Bitmap smaller(const platform::Surface& picture) {
    const int step = std::max(1, std::min(picture.width, picture.height) / kSide);
    platform::Bitmap small(picture.width / step, picture.height / step);
    for (int y = 0; y < small.height; ++y)
        for (int x = 0; x < small.width; ++x)
            averageBlock(picture, x, y, step, &small.rgba[(size_t(y) * size_t(small.width) + size_t(x)) * 4]);
    return small;
}

}  // namespace

void FramePictures::see(int64_t frame, const platform::Surface& picture) {
    if (frame == std::max<int64_t>(frames_, 0) / 2) write("poster.jpg", picture);
    const double now = platform::monotonicSeconds();
    if (now - writtenAt_ < kInterval) return;
    writtenAt_ = now;
    write("picture.jpg", picture);
}

void FramePictures::write(const char* name, const platform::Surface& picture) {
    if (hasFailed_) return;
    try {
        platform::writeJpeg(folder_ / name, smaller(picture), kQuality);
    } catch (const platform::Error&) {
        hasFailed_ = true;
    }
}

}  // namespace multiscene
