#include "platform/pixels/Blur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "platform/pixels/Convolution.h"

namespace platform {

namespace {

// Two neighbouring taps in one place between them.
struct TapPair {
    double weight, offset;  // of the whole, in steps
};

constexpr int kRadius = 8;
constexpr double kSigma = 16;

double bell(int tap) { return std::exp(-double(tap) * tap / (2 * kSigma * kSigma)); }

std::array<TapPair, kRadius / 2> tapPairs() {
    double sum = 1;
    for (int tap = 1; tap <= kRadius; ++tap) sum += 2 * bell(tap);
    std::array<TapPair, kRadius / 2> pairs;
    for (int tap = 1; tap < kRadius; tap += 2) {
        const double near = bell(tap), far = bell(tap + 1);
        pairs[static_cast<size_t>(tap / 2)] = {(near + far) / sum, tap + far / (near + far)};
    }
    return pairs;
}

class Kernel {
  public:
    Kernel(const Surface& picture, double xStep, double yStep)
        : width_(picture.width), height_(picture.height) {
        for (const auto& [weight, offset] : tapPairs())
            for (const double way : {offset, -offset}) addTap(way * xStep, way * yStep, weight);
        int others = 0;
        for (const WeighedNeighbour& part : parts_) others += part.weight;
        parts_.push_back({0, 0, 65536 - others});
    }

    const std::vector<WeighedNeighbour>& neighbours() const { return parts_; }

  private:
    // A place between four texels.
    void addTap(double x, double y, double weight) {
        const double left = std::floor(x), upper = std::floor(y), across = x - left, down = y - upper;
        for (const int right : {0, 1})
            for (const int lower : {0, 1}) {
                const double part = (right ? across : 1 - across) * (lower ? down : 1 - down);
                const auto rounded = static_cast<int>(std::lround(part * weight * 65536));
                if (rounded == 0) continue;
                parts_.push_back({bounded(left + right, width_), bounded(upper + lower, height_), rounded});
            }
    }

    // Beyond the rim all is the same.
    static int bounded(double place, int size) {
        return static_cast<int>(std::clamp(place, -double(size), double(size)));
    }

    int width_, height_;
    std::vector<WeighedNeighbour> parts_;
};

}  // namespace

void blurAlongDiagonal(const Surface& picture, double pictureWidth, double pictureHeight,
                       TilePainter& painter, const Canvas& canvas) {
    const Kernel kernel(picture, 2 / pictureWidth * picture.width, 2 / pictureHeight * picture.height);
    convolve(picture, kernel.neighbours(), painter, canvas);
}

}  // namespace platform
