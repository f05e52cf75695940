#include "platform/media/Orientation.h"

#include <libyuv.h>

#include <cstdlib>

namespace platform {

// The matrix sends a stored point (x, y), y downwards, to (a x + c y, b x + d y).
Orientation Orientation::fromDisplayMatrix(const int32_t* matrix) {
    const int64_t a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
    const int64_t determinant = a * d - b * c;
    if (determinant == 0) return {};
    Orientation orientation;
    orientation.flipsRows = determinant < 0;
    // Flipping the rows first leaves the image of the x axis alone, so that it tells the turn.
    if (std::llabs(a) >= std::llabs(b))
        orientation.turn = a > 0 ? 0 : 180;
    else
        orientation.turn = b > 0 ? 90 : 270;
    return orientation;
}

void turnUpright(const PixelBuffer& stored, Orientation orientation, PixelBuffer& upright) {
    const int width = stored.width(), height = stored.height();
    if (orientation.swapsSides())
        upright.resize(height, width);
    else
        upright.resize(width, height);
    libyuv::ARGBRotate(stored.data(), stored.stride(), upright.data(), upright.stride(), width,
                       orientation.flipsRows ? -height : height,
                       static_cast<libyuv::RotationMode>(orientation.turn));
}

}  // namespace platform
