// The outline of a picture. For the files of this folder.
#pragma once

#include <vector>

#include "platform/text/ShapedText.h"

namespace platform {

/// The lines along which the picture's alpha crosses one half, in its pixels with y upwards from its upper
/// left corner: y is negative. The picture's edge must be clear.
std::vector<OutlineContour> traceSilhouette(const Bitmap& picture);

/// The picture made opaque: its colours without alpha, carried on beyond its silhouette.
Bitmap opaquePicture(const Bitmap& picture);

}  // namespace platform
