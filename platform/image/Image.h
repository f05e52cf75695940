// Pictures in memory, as every part of the program hands them around.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform {

/// Width and height in pixels; 0 x 0 means "none".
struct ImageSize {
    int width = 0, height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(const ImageSize&) const = default;
};

/// Red, green, blue, alpha, each 0 to 1, not premultiplied.
struct Color {
    float red = 0, green = 0, blue = 0, alpha = 1;

    bool operator==(const Color&) const = default;
};

/// 8 bits a channel in the order red, green, blue, alpha; colours premultiplied by alpha; top row first;
/// rows tightly packed. Meant to be moved: copying copies the pixels.
struct Bitmap {
    int width = 0, height = 0;
    std::vector<uint8_t> rgba;

    Bitmap() = default;
    /// A fully transparent picture.
    Bitmap(int pixelWidth, int pixelHeight)
        : width(pixelWidth), height(pixelHeight), rgba(size_t(pixelWidth) * size_t(pixelHeight) * 4) {}

    ImageSize size() const { return {width, height}; }
    int stride() const { return width * 4; }
    bool isEmpty() const { return rgba.empty(); }
    /// The four bytes of one pixel; x from the left, y from the top.
    const uint8_t* pixel(int x, int y) const { return &rgba[(size_t(y) * size_t(width) + size_t(x)) * 4]; }
};

}  // namespace platform
