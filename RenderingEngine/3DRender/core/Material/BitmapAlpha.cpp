#include "core/Material/BitmapAlpha.h"

#include <algorithm>

namespace multiscene {

namespace {

constexpr int farthest = 64;  // pixels: more than any use needs

bool isClear(const platform::Bitmap& bitmap, int x, int y) { return bitmap.pixel(x, y)[3] == 0; }

/// Rows or columns from an edge inwards that are clear, `line` telling of one whether it is.
template <typename Line>
int clearLines(int size, Line line) {
    int count = 0;
    while (count < std::min(size / 2, farthest) && line(count) && line(size - 1 - count)) ++count;
    return count;
}

/// How far the picture is fully transparent inside all of its edges.
ClearMargin clearMarginOf(const platform::Bitmap& bitmap, int width, int height) {
    if (width < 4 || height < 4) return {};
    const int rows = clearLines(height, [&](int y) {
        for (int x = 0; x < width; ++x)
            if (!isClear(bitmap, x, y)) return false;
        return true;
    });
    const int columns = clearLines(width, [&](int x) {
        for (int y = 0; y < height; ++y)
            if (!isClear(bitmap, x, y)) return false;
        return true;
    });
    // Filtering reaches one texel further than the drawn pixel.
    return {static_cast<float>(std::max(columns - 1, 0)) / static_cast<float>(width),
            static_cast<float>(std::max(rows - 1, 0)) / static_cast<float>(height)};
}

/// Of the whole bitmap: filtering reaches beyond what is shown.
bool isOpaque(const platform::Bitmap& bitmap) {
    for (size_t alpha = 3; alpha < bitmap.rgba.size(); alpha += 4)
        if (bitmap.rgba[alpha] != 255) return false;
    return true;
}

}  // namespace

PictureAlpha alphaOf(const platform::Bitmap& bitmap, platform::ImageSize shown) {
    if (isOpaque(bitmap)) return {.clearMargin = {}, .isOpaque = true};
    const int width = std::min(shown.width, bitmap.width), height = std::min(shown.height, bitmap.height);
    return {.clearMargin = clearMarginOf(bitmap, width, height)};
}

}  // namespace multiscene
