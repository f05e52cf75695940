// One picture drawn as a flat convex shape anywhere in space: what is to be painted, and what follows from it
// for every pixel.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/pixels/Surface.h"

namespace platform {

/// How what is painted meets what is there.
enum class Meeting : uint8_t {
    Over,  ///< hides it by its alpha
    Add,   ///< its colours are added
};

/// What lies beside a picture.
enum class Wrap : uint8_t { Clamp, Repeat };

/// A corner on the canvas, seen through a camera: in pixels from the upper left, times w, and w itself (1
/// without perspective, not positive behind the camera); and the place in the picture, 0 to 1, (0, 0) in its
/// upper left.
struct PaintCorner {
    double x = 0, y = 0, w = 1;
    double u = 0, v = 0;
};

/// Three or four corners round a flat convex shape, either way round. Of four, the places in the picture and
/// in space belong together as those of a parallelogram; split anything else into triangles.
struct QuadPaint {
    Surface picture;
    std::array<PaintCorner, 4> corners;
    int cornerCount = 4;
    /// Which edges are smoothed, that from corner i to the next one first. What two shapes share is not, so
    /// that the ground does not show between them.
    std::array<bool, 4> smooth{true, true, true, true};
    float opacity = 1;  ///< 0 to 1
    Meeting meeting = Meeting::Over;
    Wrap wrap = Wrap::Clamp;
};

/// A line that bounds a shape. The distance of a pixel's middle is x * (column) + y * (row) + away, in
/// pixels, positive inside.
struct PaintEdge {
    float x = 0, y = 0, away = 0;
    bool smooth = true;
};

/// A shape as it is painted: visible, in front of the camera, its edges and the way from a pixel to the
/// picture known.
struct PreparedPaint {
    Surface picture;
    int left = 0, top = 0, right = 0,
        bottom = 0;  ///< pixels that may be touched, right and bottom beyond the last
    /// Convex; opposite edges of a quad are a pair, whose coverages add up, since both may cross one pixel.
    std::vector<std::array<PaintEdge, 2>> edgePairs;
    /// From a pixel's column and row to texels times q, and q; row-major. Texel i covers i to i + 1.
    std::array<double, 9> toTexel{};
    bool perspective = false;
    int opacity = 255;  ///< 1 to 255
    Meeting meeting = Meeting::Over;
    Wrap wrap = Wrap::Clamp;

    /// Whether pixels under it show nothing of what was there.
    bool hides() const { return picture.opaque && opacity == 255 && meeting == Meeting::Over; }
};

/// Prepares a shape for a canvas of this size in pixels; false when nothing of it shows.
bool preparePaint(const QuadPaint& paint, int width, int height, PreparedPaint& prepared);

}  // namespace platform
