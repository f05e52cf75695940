#include "platform/pixels/FrameLayout.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace platform {

namespace {

constexpr int smallSide = 64;  // of the blurred copy: few enough pixels to cost nothing
constexpr int blurRadius = 3;  // of its pixels
constexpr int blurPasses = 2;  // two boxes are nearly a bell
constexpr int scale = 64;      // steps between two brightnesses
constexpr int darkening = 45;  // of 64

int evenSide(double side) { return std::max(2, int(std::lround(side / 2)) * 2); }

/// The box filter along one axis of three colours a pixel; the edge pixels go on beyond it.
void boxAlong(std::vector<uint16_t>& pixels, int count, int step, size_t start) {
    std::vector<uint16_t> line(size_t(count) * 3);
    for (int i = 0; i < count; ++i)
        for (int c = 0; c < 3; ++c)
            line[size_t(i) * 3 + size_t(c)] = pixels[start + size_t(i) * size_t(step) * 3 + size_t(c)];
    for (int i = 0; i < count; ++i)
        for (int c = 0; c < 3; ++c) {
            int sum = 0;
            for (int k = -blurRadius; k <= blurRadius; ++k)
                sum += line[size_t(std::clamp(i + k, 0, count - 1)) * 3 + size_t(c)];
            pixels[start + size_t(i) * size_t(step) * 3 + size_t(c)] = uint16_t(sum / (2 * blurRadius + 1));
        }
}

/// Where a pixel of the frame lies among those of the small copy, in 256ths.
struct Between {
    int first, second, share;
};

Between between(int place, int count, int small) {
    const int at = int((int64_t(2 * place + 1) * small * 128) / count) - 128;
    const int first = at >> 8;
    return {std::clamp(first, 0, small - 1), std::clamp(first + 1, 0, small - 1), at & 255};
}

}  // namespace

std::optional<Fit> fitNamed(std::string_view name) {
    constexpr std::pair<std::string_view, Fit> names[] = {
        {"pad", Fit::Pad}, {"crop", Fit::Crop}, {"stretch", Fit::Stretch}, {"blur", Fit::Blur}};
    for (const auto& [known, fit] : names)
        if (known == name) return fit;
    return std::nullopt;
}

FrameLayout FrameLayout::fitted(int ownWidth, int ownHeight, int width, int height, Fit fit) {
    const double across = double(width) / ownWidth, down = double(height) / ownHeight;
    const double factor = fit == Fit::Crop ? std::max(across, down) : std::min(across, down);
    const int drawnWidth = evenSide(ownWidth * factor), drawnHeight = evenSide(ownHeight * factor);
    constexpr int rounding = 2;  // pixels
    const bool isSameShape =
        std::abs(drawnWidth - width) <= rounding && std::abs(drawnHeight - height) <= rounding;
    if (isSameShape || fit == Fit::Stretch) return whole(width, height);
    return {drawnWidth, drawnHeight, width, height, fit == Fit::Blur};
}

void FramePlacer::place(const uint8_t* drawn, uint8_t* frame) {
    if (layout_.drawnWidth < layout_.width || layout_.drawnHeight < layout_.height) {
        if (layout_.blursMargins) {
            average(drawn);
            blur();
        }
        fillMargins(frame);
    }
    copyMiddle(drawn, frame);
}

void FramePlacer::copyMiddle(const uint8_t* drawn, uint8_t* frame) const {
    const int columns = std::min(layout_.drawnWidth, layout_.width);
    const int rows = std::min(layout_.drawnHeight, layout_.height);
    const auto middleOf = [&](int width, int height) {
        return (size_t(height - rows) / 2 * size_t(width) + size_t(width - columns) / 2) * 4;
    };
    const uint8_t* from = drawn + middleOf(layout_.drawnWidth, layout_.drawnHeight);
    uint8_t* to = frame + middleOf(layout_.width, layout_.height);
    for (int row = 0; row < rows; ++row) {
        std::memcpy(to, from, size_t(columns) * 4);
        from += size_t(layout_.drawnWidth) * 4;
        to += size_t(layout_.width) * 4;
    }
}

/// The middle of the picture that has the frame's shape, as a small copy.
void FramePlacer::average(const uint8_t* drawn) {
    const double cover =
        std::min(double(layout_.drawnWidth) / layout_.width, double(layout_.drawnHeight) / layout_.height);
    const int width = std::max(1, int(layout_.width * cover)),
              height = std::max(1, int(layout_.height * cover));
    const int left = (layout_.drawnWidth - width) / 2, top = (layout_.drawnHeight - height) / 2;
    const int longer = std::max(width, height);
    smallWidth_ = std::clamp(smallSide * width / longer, 1, width);
    smallHeight_ = std::clamp(smallSide * height / longer, 1, height);
    small_.assign(size_t(smallWidth_) * size_t(smallHeight_) * 3, 0);
    std::vector<uint64_t> sums(size_t(smallWidth_) * 3);
    for (int y = 0; y < smallHeight_; ++y) {
        const int firstRow = y * height / smallHeight_, lastRow = (y + 1) * height / smallHeight_;
        std::fill(sums.begin(), sums.end(), 0);
        for (int row = firstRow; row < lastRow; ++row) {
            const uint8_t* line = drawn + (size_t(top + row) * size_t(layout_.drawnWidth) + size_t(left)) * 4;
            for (int x = 0; x < smallWidth_; ++x) {
                uint32_t sum[3] = {};
                for (int column = x * width / smallWidth_; column < (x + 1) * width / smallWidth_; ++column)
                    for (int c = 0; c < 3; ++c) sum[c] += line[size_t(column) * 4 + size_t(c)];
                for (size_t c = 0; c < 3; ++c) sums[size_t(x) * 3 + c] += sum[c];
            }
        }
        for (int x = 0; x < smallWidth_; ++x) {
            const int columns = (x + 1) * width / smallWidth_ - x * width / smallWidth_;
            const auto area = uint64_t(columns) * uint64_t(lastRow - firstRow);
            for (size_t c = 0; c < 3; ++c)
                small_[(size_t(y) * size_t(smallWidth_) + size_t(x)) * 3 + c] =
                    uint16_t(sums[size_t(x) * 3 + c] * darkening / area);
        }
    }
}

void FramePlacer::blur() {
    columns_.resize(size_t(layout_.width));
    for (int x = 0; x < layout_.width; ++x) {
        const Between place = between(x, layout_.width, smallWidth_);
        columns_[size_t(x)] = {place.first, place.second, place.share};
    }
    for (int pass = 0; pass < blurPasses; ++pass) {
        for (int y = 0; y < smallHeight_; ++y)
            boxAlong(small_, smallWidth_, 1, size_t(y) * size_t(smallWidth_) * 3);
        for (int x = 0; x < smallWidth_; ++x) boxAlong(small_, smallHeight_, smallWidth_, size_t(x) * 3);
    }
}

void FramePlacer::mixRows(int y) {
    const Between rows = between(y, layout_.height, smallHeight_);
    const uint16_t* upper = &small_[size_t(rows.first) * size_t(smallWidth_) * 3];
    const uint16_t* lower = &small_[size_t(rows.second) * size_t(smallWidth_) * 3];
    mixed_.resize(size_t(smallWidth_) * 3);
    // 255 * 64 * 256 * 256 fits.
    for (size_t i = 0; i < mixed_.size(); ++i)
        mixed_[i] = upper[i] * (256 - rows.share) + lower[i] * rows.share;
}

/// Pixels `from` to `to` of a row of the frame.
void FramePlacer::fillRow(int from, int to, uint8_t* row) const {
    constexpr int bits = 22;  // of scale * 256 * 256
    static_assert(scale << 16 == 1 << bits);
    for (int x = from; x < to; ++x) {
        uint8_t* pixel = row + size_t(x) * 4;
        pixel[0] = pixel[1] = pixel[2] = 0;
        pixel[3] = 255;
        if (!layout_.blursMargins) continue;
        const Column& column = columns_[size_t(x)];
        const int *left = &mixed_[size_t(column.first) * 3], *right = &mixed_[size_t(column.second) * 3];
        for (int c = 0; c < 3; ++c)
            pixel[c] = uint8_t((left[c] * (256 - column.share) + right[c] * column.share) >> bits);
    }
}

void FramePlacer::fillMargins(uint8_t* frame) {
    const int left = std::max(0, layout_.width - layout_.drawnWidth) / 2, right = layout_.width - left;
    const int top = std::max(0, layout_.height - layout_.drawnHeight) / 2, bottom = layout_.height - top;
    for (int y = 0; y < layout_.height; ++y) {
        uint8_t* row = frame + size_t(y) * size_t(layout_.width) * 4;
        if (layout_.blursMargins) mixRows(y);
        if (y < top || y >= bottom) {
            fillRow(0, layout_.width, row);
        } else {
            fillRow(0, left, row);
            fillRow(right, layout_.width, row);
        }
    }
}

}  // namespace platform
