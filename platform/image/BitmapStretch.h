#pragma once

#include "platform/image/Image.h"

namespace platform {

/// The picture stretched to a size, bilinear between the centres of its pixels. For pictures in memory; files
/// are decoded at the size that is wanted.
Bitmap stretched(const Bitmap& picture, ImageSize size);

/// The picture shrunk, or left, on each axis: every pixel is the average of what it covers.
Bitmap averaged(const Bitmap& picture, ImageSize size);

}  // namespace platform
