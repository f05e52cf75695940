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

    bool operator==(const Aspect&) const = default;
};

/// What the user wants to see of a photo. Places and lengths are shares of the upright picture, y down; 0 to
/// 1, but for a part that is turned, of which no more than the middle has to lie in the picture.
struct PhotoCrop {
    enum class Kind {
        Automatic,  ///< faces stay, or failing that what catches the eye
        Focus,      ///< the point (x, y) lies as near to the middle as the picture allows
        Part,       ///< nothing outside the rectangle is shown
    };

    Kind kind = Kind::Automatic;
    double x = 0, y = 0, width = 1, height = 1;
    /// Degrees, clockwise: the rectangle is turned about its middle, and what lies in it is shown upright.
    /// Beyond the picture its edge goes on.
    double angle = 0;

    bool operator==(const PhotoCrop&) const = default;
};

/// A turned rectangle in a picture's pixels, told by its middle and by its own sides.
struct TurnedRectangle {
    double middleX = 0, middleY = 0, width = 0, height = 0;
};

/// A part of a picture, in its pixels.
struct PixelRectangle {
    int x = 0, y = 0, width = 0, height = 0;

    ImageSize size() const { return {width, height}; }
};

/// The largest rectangle of the proportions around the middle of a part that is turned.
TurnedRectangle turnedPart(ImageSize picture, Aspect aspect, const PhotoCrop& crop);

/// The largest part of the proportions within `crop`; an automatic one lies in the middle.
PixelRectangle croppedPart(ImageSize picture, Aspect aspect, const PhotoCrop& crop);

/// Moves `part` so that it keeps whole heads: as many as fit, the largest faces first. Nothing when there
/// are no faces. `faces` in the picture's pixels, the largest first, as found.
std::optional<PixelRectangle> partWithHeads(ImageSize picture, PixelRectangle part,
                                            const std::vector<Face>& faces);

}  // namespace platform
