// Private to platform/media: how a picture lies in its file, and turning it upright.
#pragma once

#include <cstdint>

#include "platform/media/PixelBuffer.h"

namespace platform {

/// First an optional flip of the rows, then a clockwise turn: all eight ways in which a picture can lie.
struct Orientation {
    bool flipsRows = false;
    int turn = 0;  ///< 0, 90, 180 or 270 degrees clockwise

    bool isUpright() const { return !flipsRows && turn == 0; }
    /// Upright pictures are as wide as the stored ones are high.
    bool swapsSides() const { return turn == 90 || turn == 270; }

    /// From the nine entries of a file's display matrix; the nearest quarter turn, upright when it makes no
    /// sense.
    static Orientation fromDisplayMatrix(const int32_t* matrix);
};

/// Writes `stored` turned upright into `upright`, whose size it sets.
void turnUpright(const PixelBuffer& stored, Orientation orientation, PixelBuffer& upright);

}  // namespace platform
