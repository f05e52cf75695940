#pragma once

#include <optional>

#include "platform/image/PhotoCrop.h"

namespace multiscene {

/// The part of a photo that these numbers mean: left, top, width and height as shares of the upright picture,
/// and degrees, clockwise, by which the rectangle is turned. None when they mean none: it is empty, or
/// reaches out of the picture. One that is turned may do that, as far as its middle stays in.
std::optional<platform::PhotoCrop> photoPart(double x, double y, double width, double height, double angle);

}  // namespace multiscene
