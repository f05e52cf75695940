#pragma once

#include "core/GLESUtils/FrameEdges.h"
#include "platform/image/Image.h"

namespace multiscene {

/// How far the upper left part of a bitmap, of the size shown, is fully transparent inside all of its edges.
ClearMargin clearMarginOf(const platform::Bitmap& bitmap, platform::ImageSize shown);

}  // namespace multiscene
