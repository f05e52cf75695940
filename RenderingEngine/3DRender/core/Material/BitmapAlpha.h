#pragma once

#include "core/GLESUtils/FrameEdges.h"
#include "platform/image/Image.h"

namespace multiscene {

/// What the alpha channel of the upper left part of a bitmap, of the size shown, is like.
PictureAlpha alphaOf(const platform::Bitmap& bitmap, platform::ImageSize shown);

}  // namespace multiscene
