#include "studio/jobs/CostEstimate.h"

#include <algorithm>

namespace multiscene::studio {

namespace {

constexpr double kUsual = 30'000;  // picoseconds: 30 ms for a frame of a million pixels
constexpr double kStart = 0.5;     // seconds that have nothing to do with frames
constexpr double kMost = 1e12;     // milliseconds, thirty years

}  // namespace

int64_t CostEstimate::milliseconds(int64_t frames, int64_t pixels, std::optional<int64_t> picoseconds) {
    const double each = picoseconds ? static_cast<double>(*picoseconds) : kUsual;
    const double seconds = kStart + static_cast<double>(std::max<int64_t>(frames, 1)) *
                                        static_cast<double>(pixels) * each * 1e-12;
    return static_cast<int64_t>(std::min(seconds * 1000, kMost));
}

int64_t CostEstimate::picoseconds(int64_t frames, int64_t pixels, double seconds) {
    const double all =
        static_cast<double>(std::max<int64_t>(frames, 1)) * static_cast<double>(std::max<int64_t>(pixels, 1));
    return static_cast<int64_t>(std::max(seconds - kStart, 0.0) * 1e12 / all) + 1;
}

}  // namespace multiscene::studio
