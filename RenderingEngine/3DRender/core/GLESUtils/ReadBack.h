// A framebuffer's pixels into the caller's memory.
#pragma once

#include <cstdint>

#include "core/GLESUtils/TextureUpload.h"

namespace multiscene {

/// Reads the lower left width * height pixels of a framebuffer with one sample. Rows come bottom row first,
/// as GL keeps them. `stride` is in bytes, a multiple of 4, at least width * 4. Waits until everything drawn
/// is there. The framebuffer stays bound. Either order works on every driver.
void readFramebuffer(unsigned int framebuffer, int width, int height, PixelOrder order, uint8_t* pixels,
                     int stride);

}  // namespace multiscene
