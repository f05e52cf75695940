#pragma once

#include <memory>

#include "core/GLESUtils/Texture.h"
#include "platform/base/CMTime.h"

namespace multiscene {

/// One decoded picture on its way to a material or a background. The texture belongs to the reader, which
/// fills it anew with every picture: at most the latest record of a reader is good to draw.
struct QVVideoFrameRenderOutput {
    std::shared_ptr<Texture> outputTexture;
    platform::CMTime frameTime;              ///< the frame number at the reader's frame rate
    double frameWidth = 0, frameHeight = 0;  ///< pixels
};

}  // namespace multiscene
