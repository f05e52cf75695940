// Shapes of one picture that meet along an edge: halves of a split picture, faces of a cube.
#pragma once

#include <span>

#include "platform/pixels/QuadPaint.h"

namespace platform {

/// Makes that no ground shows between shapes that lie on either side of an edge whose ends are the same,
/// within 1/16 of a pixel. `paints` in the order in which they are painted, the first one farthest back.
/// Where the upper shape hides what is under it, the lower one reaches under its smoothed edge; otherwise
/// both end sharply at the same line. Time grows with the number of shapes.
void shareEdges(std::span<QuadPaint> paints);

}  // namespace platform
