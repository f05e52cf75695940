// The pictures of a PVR file, whatever its format is.
#pragma once

#include <vector>

#include "platform/image/Image.h"
#include "platform/image/PvrFile.h"

namespace platform {

/// All levels, the largest first, as red, green, blue and alpha of eight bits; colours as the file has them,
/// not multiplied by alpha. Empty for a file that was rejected.
std::vector<Bitmap> pvrPictures(const PvrFile& file);

}  // namespace platform
