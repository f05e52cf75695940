// Pictures with their memory, and shapes, for what paints.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <ostream>
#include <random>
#include <vector>

#include "platform/pixels/TilePainter.h"

namespace platform {

struct Pixel {
    int blue, green, red, alpha;
    bool operator==(const Pixel&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Pixel& pixel) {
    return out << pixel.blue << ',' << pixel.green << ',' << pixel.red << ',' << pixel.alpha;
}

/// A picture with its memory.
class Picture {
  public:
    Picture(int width, int height, Pixel colour = {0, 0, 0, 0}) : width_(width), height_(height) {
        bytes_.resize(static_cast<size_t>(width * height * 4));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) set(x, y, colour);
    }

    static Picture noise(int width, int height, bool opaque, unsigned seed) {
        Picture picture(width, height);
        std::mt19937 random(seed);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const int alpha = opaque ? 255 : static_cast<int>(random() % 3 * 255 / 2);
                const auto level = [&] { return static_cast<int>(random() % 256) * alpha / 255; };
                picture.set(x, y, {level(), level(), level(), alpha});
            }
        return picture;
    }

    void set(int x, int y, const Pixel& pixel) {
        uint8_t* bytes = &bytes_[static_cast<size_t>((y * width_ + x) * 4)];
        bytes[0] = static_cast<uint8_t>(pixel.blue);
        bytes[1] = static_cast<uint8_t>(pixel.green);
        bytes[2] = static_cast<uint8_t>(pixel.red);
        bytes[3] = static_cast<uint8_t>(pixel.alpha);
    }
    Pixel at(int x, int y) const {
        const uint8_t* bytes = &bytes_[static_cast<size_t>((y * width_ + x) * 4)];
        return {bytes[0], bytes[1], bytes[2], bytes[3]};
    }
    int width() const { return width_; }
    int height() const { return height_; }
    Surface surface(bool opaque) const { return {bytes_.data(), width_ * 4, width_, height_, opaque}; }
    Canvas canvas() { return {bytes_.data(), width_ * 4, width_, height_}; }
    bool operator==(const Picture&) const = default;

    /// The same picture, upside down in memory.
    Picture flipped() const {
        Picture result(width_, height_);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) result.set(x, height_ - 1 - y, at(x, y));
        return result;
    }
    Surface upwards(bool opaque) const { return {&bytes_[lastRow()], -width_ * 4, width_, height_, opaque}; }
    Canvas upwardsCanvas() { return {&bytes_[lastRow()], -width_ * 4, width_, height_}; }

  private:
    size_t lastRow() const { return static_cast<size_t>((height_ - 1) * width_ * 4); }

    int width_, height_;
    std::vector<uint8_t> bytes_;
};

inline QuadPaint rectangle(const Surface& picture, double left, double top, double right, double bottom) {
    QuadPaint paint;
    paint.picture = picture;
    paint.corners = {
        {{left, top, 1, 0, 0}, {right, top, 1, 1, 0}, {right, bottom, 1, 1, 1}, {left, bottom, 1, 0, 1}}};
    return paint;
}

inline QuadPaint turned(const Surface& picture, double x, double y, double width, double height,
                        double degrees) {
    QuadPaint paint = rectangle(picture, -width / 2, -height / 2, width / 2, height / 2);
    const double angle = degrees * std::numbers::pi / 180, c = std::cos(angle), s = std::sin(angle);
    for (PaintCorner& corner : paint.corners) {
        const double across = corner.x, down = corner.y;
        corner.x = x + c * across - s * down;
        corner.y = y + s * across + c * down;
    }
    return paint;
}

inline void paint(const std::vector<QuadPaint>& paints, uint32_t background, Picture& picture,
                  int threads = 1) {
    std::vector<PreparedPaint> prepared;
    for (const QuadPaint& each : paints) {
        PreparedPaint one;
        if (preparePaint(each, picture.width(), picture.height(), one)) prepared.push_back(one);
    }
    TilePainter(threads).paint(prepared, background, picture.canvas());
}

constexpr uint32_t kBlack = 0xFF000000;

}  // namespace platform
