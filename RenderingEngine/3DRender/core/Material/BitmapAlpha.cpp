#include "core/Material/BitmapAlpha.h"

#include <algorithm>

namespace multiscene {

namespace {

constexpr int farthest = 64;  // pixels: more than any use needs

bool isClear(const platform::Bitmap& bitmap, int x, int y) { return bitmap.pixel(x, y)[3] == 0; }

/// How many rows or columns from an edge inwards are clear, less the one that filtering reaches, as a part of
/// `size`. `isClearLine` is asked about the first, the second and so on.
template <typename Line>
float clearPart(int size, Line isClearLine) {
    int count = 0;
    while (count < std::min(size, farthest) && isClearLine(count)) ++count;
    return static_cast<float>(std::max(count - 1, 0)) / static_cast<float>(size);
}

ClearMargin clearMarginOf(const platform::Bitmap& bitmap, int width, int height) {
    if (width < 4 || height < 4) return {};
    const auto row = [&](int y) {
        for (int x = 0; x < width; ++x)
            if (!isClear(bitmap, x, y)) return false;
        return true;
    };
    const auto column = [&](int x) {
        for (int y = 0; y < height; ++y)
            if (!isClear(bitmap, x, y)) return false;
        return true;
    };
    return {.lower = clearPart(height, [&](int i) { return row(height - 1 - i); }),
            .right = clearPart(width, [&](int i) { return column(width - 1 - i); }),
            .upper = clearPart(height, row),
            .left = clearPart(width, column)};
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
