// Every pixel of a picture mixed with its neighbours.
#pragma once

#include <span>

#include "platform/pixels/Surface.h"

namespace platform {

class TilePainter;

/// A pixel beside the one that is mixed, and how much it counts.
struct WeighedNeighbour {
    int column = 0, row = 0;
    int weight = 0;  ///< of 65536, below that
};

/// Mixes colours as they are; the weights add up to 65536. Beyond the rim lies the rim. The canvas has the
/// size of the surface, and is not the same memory. On the threads of `painter`; the same bytes on every
/// processor.
void convolve(const Surface& picture, std::span<const WeighedNeighbour> neighbours, TilePainter& painter,
              const Canvas& canvas);

}  // namespace platform
