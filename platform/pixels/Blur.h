// The blurred copy of a picture that shows behind another one.
#pragma once

#include "platform/pixels/Surface.h"

namespace platform {

class TilePainter;

/// Blurs a picture along its diagonal: 17 taps, weighed by a bell curve of sigma 16, each 2 / size of the
/// picture apart. Colours are mixed as they are; beyond the rim lies the rim. `pictureWidth` and
/// `pictureHeight`, in pixels, greater than 0, say the size of the picture that the texels show: most often
/// that of the surface. The canvas has the size of the surface, and is not the same memory. On the threads of
/// `painter`.
void blurAlongDiagonal(const Surface& picture, double pictureWidth, double pictureHeight,
                       TilePainter& painter, const Canvas& canvas);

}  // namespace platform
