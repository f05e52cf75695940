// Pictures of letters side by side in one bitmap. For the files of this folder.
#pragma once

#include <optional>

#include "platform/image/Image.h"

namespace platform {

/// Takes pictures as they come and finds room for each.
class GlyphAtlas {
  public:
    static constexpr int width = 1024, maxHeight = 4096;  ///< pixels

    struct Place {
        int x, y;
    };
    /// Where the picture's upper left corner lies now; nothing when there is no room for it.
    std::optional<Place> add(const Bitmap& picture);

    /// As high as it needs to be; empty without pictures.
    const Bitmap& bitmap() const { return atlas_; }
    Bitmap takeBitmap() { return std::move(atlas_); }

  private:
    Bitmap atlas_;
    int nextX_ = 0, rowY_ = 0, rowHeight_ = 0;
};

}  // namespace platform
