// Which part of a photo is kept when it has another shape than its place.
#pragma once

#include <optional>
#include <vector>

#include "platform/face/FaceFinder.h"
#include "platform/image/Image.h"

namespace platform {

/// Width to height that a photo is cropped to; 0 on either side: no crop.
struct Aspect {
    int width = 0, height = 0;
};

/// What the user wants to see of a photo. All numbers are shares of the upright picture, 0 to 1, y down.
struct PhotoCrop {
    enum class Kind {
        Automatic,  ///< faces stay, or failing that what catches the eye
        Focus,      ///< the point (x, y) lies as near to the middle as the picture allows
        Part,       ///< nothing outside the rectangle is shown
    };

    Kind kind = Kind::Automatic;
    double x = 0, y = 0, width = 1, height = 1;
};

/// A part of a picture, in its pixels.
struct PixelRectangle {
    int x = 0, y = 0, width = 0, height = 0;

    ImageSize size() const { return {width, height}; }
};

/// The largest part of the proportions within `crop`; an automatic one lies in the middle.
PixelRectangle croppedPart(ImageSize picture, Aspect aspect, const PhotoCrop& crop);

/// Moves `part` so that it keeps whole heads: as many as fit, the largest faces first. Nothing when there
/// are no faces. `faces` in the picture's pixels, the largest first, as found.
std::optional<PixelRectangle> partWithHeads(ImageSize picture, PixelRectangle part,
                                            const std::vector<Face>& faces);

}  // namespace platform
