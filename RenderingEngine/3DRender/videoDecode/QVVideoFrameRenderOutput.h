#pragma once

#include <cstdint>
#include <string>

#include "platform/base/CMTime.h"

namespace multiscene {

/// One decoded picture on its way to a material or a background. The texture belongs to the reader, which
/// fills it anew with every picture: at most the latest record of a reader is good to draw.
struct QVVideoFrameRenderOutput {
    uint32_t outputTexture = 0;
    platform::CMTime frameTime;              ///< the frame number at the reader's frame rate
    double frameWidth = 0, frameHeight = 0;  ///< pixels
    bool isOpaque = true;                    ///< no pixel lets through what lies behind

    /// Forgets the texture; may run twice.
    void cleanupResource() { outputTexture = 0; }
    std::string description() const;
};

}  // namespace multiscene
