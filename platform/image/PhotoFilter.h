// Shapes a photo inside its texture: a picture laid over it, or rounded corners with or without a stroke.
#pragma once

#include <string>

#include "platform/image/Image.h"

namespace platform {

/// A filter as a scene file writes it; lengths in canvas pixels. Any number is harmless: a length beyond half
/// the shorter side counts as that.
struct PhotoFilter {
    std::string type;  ///< "imageSynthesis", "circularAndStroke", "roundRect"; anything else draws nothing
    float cornerRadius = 0;
    float strokeWidth = 0;
    Color strokeColor;
};

/// Draws `photo`, already stretched to the canvas, into a new canvas of its size.
/// - "imageSynthesis": the photo, and `overlay` (of the same size, or null) over it.
/// - "circularAndStroke": the photo within a rounded rectangle, whose outline is stroked; the outer
///   half of the stroke is cut off with the photo. Radius 0: the plain photo and no stroke.
/// - "roundRect": the photo within a rounded rectangle.
/// - any other type: a fully transparent canvas.
Bitmap drawPhotoFilter(const PhotoFilter& filter, const Bitmap& photo, const Bitmap* overlay = nullptr);

}  // namespace platform
