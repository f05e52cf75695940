// Where the cut edge of a solid letter ends on its front. For the files of this folder.
#pragma once

#include <vector>

#include "platform/text/ShapedText.h"

namespace platform {

/// A closed line around a letter, with what its corners need to become a solid's edge.
struct Rim {
    OutlineContour corners;
    /// From each corner into the letter, to where the cut ends; 0,0 without one.
    std::vector<OutlinePoint> inwards;
    std::vector<double> width;  ///< of the cut, at each corner
    /// Out of the letter, of length 1, at the two ends of the line that follows each corner: the same for two
    /// lines that meet in a curve.
    std::vector<std::array<OutlinePoint, 2>> normals;
};

/// The rims of a letter whose edges are cut `width` wide, less where it is too thin: the lines that end the
/// cut neither turn round nor cross each other.
std::vector<Rim> bevelledRims(const std::vector<OutlineContour>& contours, double width);

}  // namespace platform
