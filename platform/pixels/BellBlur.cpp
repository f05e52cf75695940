#include "platform/pixels/BellBlur.h"

#include <algorithm>
#include <cmath>

#include "platform/pixels/Convolution.h"
#include "platform/pixels/TilePainter.h"

namespace platform {

namespace {

constexpr double kNarrowest = 0.35, kWidest = 3;  // what is blurred without halving

double bell(int tap, double sigma) { return std::exp(-double(tap) * tap / (2 * sigma * sigma)); }

std::vector<int> weightsOf(double sigma) {
    const int reach = std::max(1, static_cast<int>(std::ceil(2.6 * sigma)));
    double sum = 1;
    for (int tap = 1; tap <= reach; ++tap) sum += 2 * bell(tap, sigma);
    std::vector<int> weights{65536};
    for (int tap = 1; tap <= reach; ++tap) {
        weights.push_back(static_cast<int>(std::lround(bell(tap, sigma) / sum * 65536)));
        weights[0] -= 2 * weights.back();
    }
    return weights;
}

// Means of four, rounded.
void halveRow(const uint8_t* upper, const uint8_t* lower, int width, uint8_t* half) {
    const auto mean = [&](int left, int right, int byte) {
        return static_cast<uint8_t>(
            (upper[left + byte] + upper[right + byte] + lower[left + byte] + lower[right + byte] + 2) >> 2);
    };
    int x = 0;
    for (; x < width / 2; ++x)
        for (int byte = 0; byte < 4; ++byte) half[4 * x + byte] = mean(8 * x, 8 * x + 4, byte);
    if (width % 2 == 1)
        for (int byte = 0; byte < 4; ++byte) half[4 * x + byte] = mean(8 * x, 8 * x, byte);
}

void halve(const Surface& picture, const Canvas& half, TilePainter& threads) {
    constexpr int kRows = 16;
    threads.share((half.height + kRows - 1) / kRows, [&](int piece) {
        const int bottom = std::min(piece * kRows + kRows, half.height);
        for (int row = piece * kRows; row < bottom; ++row)
            halveRow(picture.pixels + 2 * row * picture.stride,
                     picture.pixels + std::min(2 * row + 1, picture.height - 1) * picture.stride,
                     picture.width, half.pixels + row * half.stride);
    });
}

Surface seen(const Canvas& canvas, bool opaque) {
    return {.pixels = canvas.pixels,
            .stride = canvas.stride,
            .width = canvas.width,
            .height = canvas.height,
            .opaque = opaque};
}

}  // namespace

BellSteps bellSteps(double sigma) {
    BellSteps steps;
    double left = std::max(sigma, 0.0);
    for (; left > kWidest; left /= 2) ++steps.halvings;
    // What halving, and looking between the pixels of the small copy, blur by themselves.
    if (steps.halvings > 0) left = std::sqrt(left * left - 0.25);
    steps.weights = weightsOf(std::max(left, kNarrowest));
    return steps;
}

Surface BellBlur::blur(const Surface& picture, const BellSteps& steps, TilePainter& threads) {
    Surface shown = picture;
    int slot = 0;
    const auto next = [&](int width, int height) { return canvas(slot++ % 2, width, height); };
    for (int i = 0; i < steps.halvings; ++i) {
        const Canvas half = next(halved(shown.width), halved(shown.height));
        halve(shown, half, threads);
        shown = seen(half, picture.opaque);
    }
    for (const bool isDown : {false, true}) {
        std::vector<WeighedNeighbour> neighbours;
        const int reach = static_cast<int>(steps.weights.size()) - 1;
        for (int tap = -reach; tap <= reach; ++tap) {
            const int weight = steps.weights[static_cast<size_t>(std::abs(tap))];
            if (weight > 0) neighbours.push_back({isDown ? 0 : tap, isDown ? tap : 0, weight});
        }
        const Canvas blurred = next(shown.width, shown.height);
        convolve(shown, neighbours, threads, blurred);
        shown = seen(blurred, picture.opaque);
    }
    return shown;
}

Canvas BellBlur::canvas(int slot, int width, int height) {
    std::vector<uint8_t>& memory = memory_[slot];
    const ptrdiff_t stride = ptrdiff_t{width} * 4;
    const auto bytes = static_cast<size_t>(stride * height);
    if (memory.size() < bytes) memory.resize(bytes);
    return {.pixels = memory.data(), .stride = stride, .width = width, .height = height};
}

}  // namespace platform
