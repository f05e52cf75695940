// Fills outlines with triangles, and unites them. For the files of this folder.
#pragma once

#include <vector>

#include "platform/text/ShapedText.h"

namespace platform {

/// Corners of triangles, counter-clockwise, over all that the contours enclose at least once.
std::vector<OutlinePoint> tessellate(const std::vector<OutlineContour>& contours);
/// The lines around the same, which neither cross nor lie within it.
std::vector<OutlineContour> united(const std::vector<OutlineContour>& contours);

}  // namespace platform
