#include "platform/font/GlyphAtlas.h"

#include <algorithm>

namespace platform {

std::optional<GlyphAtlas::Place> GlyphAtlas::add(const Bitmap& picture) {
    if (nextX_ + picture.width > width) {
        rowY_ += rowHeight_;
        nextX_ = rowHeight_ = 0;
    }
    if (picture.width > width || rowY_ + picture.height > maxHeight) return std::nullopt;
    const Place place{nextX_, rowY_};
    nextX_ += picture.width;
    rowHeight_ = std::max(rowHeight_, picture.height);
    atlas_.width = width;
    atlas_.height = std::max(atlas_.height, rowY_ + rowHeight_);
    atlas_.rgba.resize(size_t(atlas_.height) * size_t(atlas_.stride()));
    for (int y = 0; y < picture.height; ++y)
        std::copy_n(picture.pixel(0, y), picture.stride(),
                    &atlas_.rgba[size_t(place.y + y) * size_t(atlas_.stride()) + size_t(place.x) * 4]);
    return place;
}

}  // namespace platform
