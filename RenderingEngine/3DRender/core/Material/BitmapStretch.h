#pragma once

#include "platform/image/Image.h"

namespace multiscene {

/// The picture stretched to a size, bilinear between the centres of its pixels. For pictures in memory; files
/// are decoded at the size that is wanted.
platform::Bitmap stretched(const platform::Bitmap& picture, platform::ImageSize size);

/// The picture shrunk, or left, on each axis: every pixel is the average of what it covers.
platform::Bitmap averaged(const platform::Bitmap& picture, platform::ImageSize size);

}  // namespace multiscene
