// The pictures of a PVR file, whatever its format is.
#pragma once

#include <vector>

#include "core/GLESUtils/PvrFile.h"
#include "platform/image/Image.h"

namespace multiscene {

/// All levels, the largest first, as red, green, blue and alpha of eight bits; colours as the file has them,
/// not multiplied by alpha. Empty for a file that was rejected.
std::vector<platform::Bitmap> pvrPictures(const PvrFile& file);

}  // namespace multiscene
