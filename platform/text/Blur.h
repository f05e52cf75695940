// Softens the shadow of a text. For the files of this folder.
#pragma once

#include <cstdint>

namespace platform {

/// Blurs one 8-bit channel in place, three box passes each way, which comes close to a Gaussian bell of
/// standard deviation radius / 2. What lies outside counts as 0. `stride` in bytes; radius in pixels, up to
/// 0.5 does nothing.
void blurChannel(uint8_t* pixels, int width, int height, int stride, double radius);

}  // namespace platform
