// Pictures of letters side by side in one bitmap. For the files of this folder.
#pragma once

#include <optional>
#include <vector>

#include "platform/image/Image.h"

namespace platform {

/// Takes pictures as they come and finds room for each.
class GlyphAtlas {
  public:
    static constexpr int width = 2048, maxHeight = 4096;  ///< pixels

    /// `step`: pictures begin at its multiples, so that halving the atlas mixes none of them with another.
    explicit GlyphAtlas(int step = 1) : step_(step) {}

    struct Place {
        int x, y;
    };
    /// Where the picture's upper left corner lies now; nothing when there is no room for it.
    std::optional<Place> add(const Bitmap& picture);

    /// As high as it needs to be, a power of two; empty without pictures.
    const Bitmap& bitmap() const { return atlas_; }
    Bitmap takeBitmap() { return std::move(atlas_); }

  private:
    int stepped(int length) const { return (length + step_ - 1) / step_ * step_; }

    Bitmap atlas_;
    int step_;
    int nextX_ = 0, rowY_ = 0, rowHeight_ = 0;
};

/// The picture and `count` - 1 further ones, each half of the one before.
std::vector<Bitmap> halvedPictures(Bitmap picture, int count);

}  // namespace platform
