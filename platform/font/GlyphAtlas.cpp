#include "platform/font/GlyphAtlas.h"

#include <algorithm>
#include <bit>

namespace platform {

std::optional<GlyphAtlas::Place> GlyphAtlas::add(const Bitmap& picture) {
    const int wide = stepped(picture.width), high = stepped(picture.height);
    if (nextX_ + wide > width) {
        rowY_ += rowHeight_;
        nextX_ = rowHeight_ = 0;
    }
    if (wide > width || rowY_ + high > maxHeight) return std::nullopt;
    const Place place{nextX_, rowY_};
    nextX_ += wide;
    rowHeight_ = std::max(rowHeight_, high);
    atlas_.width = width;
    atlas_.height = std::max(atlas_.height, int(std::bit_ceil(unsigned(rowY_ + rowHeight_))));
    atlas_.rgba.resize(size_t(atlas_.height) * size_t(atlas_.stride()));
    for (int y = 0; y < picture.height; ++y)
        std::copy_n(picture.pixel(0, y), picture.stride(),
                    &atlas_.rgba[size_t(place.y + y) * size_t(atlas_.stride()) + size_t(place.x) * 4]);
    return place;
}

namespace {

Bitmap halved(const Bitmap& picture) {
    Bitmap half(std::max(1, picture.width / 2), std::max(1, picture.height / 2));
    for (int y = 0; y < half.height; ++y)
        for (int x = 0; x < half.width; ++x) {
            const uint8_t *upper = picture.pixel(2 * x, 2 * y), *lower = picture.pixel(2 * x, 2 * y + 1);
            uint8_t* pixel = &half.rgba[(size_t(y) * size_t(half.width) + size_t(x)) * 4];
            for (size_t c = 0; c < 4; ++c)
                pixel[c] = uint8_t((upper[c] + upper[c + 4] + lower[c] + lower[c + 4] + 2) / 4);
        }
    return half;
}

}  // namespace

std::vector<Bitmap> halvedPictures(Bitmap picture, int count) {
    std::vector<Bitmap> pictures;
    pictures.push_back(std::move(picture));
    for (int i = 1; i < count && pictures.back().height > 1; ++i) pictures.push_back(halved(pictures.back()));
    return pictures;
}

}  // namespace platform
