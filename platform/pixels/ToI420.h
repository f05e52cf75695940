// Rendered pictures as an encoder takes them: a plane of brightness and two of colour at half the width and
// height.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/media/PixelBuffer.h"
#include "platform/pixels/YuvMatrix.h"

namespace platform {

/// Where the planes go. Strides are in bytes.
struct I420Planes {
    uint8_t* y = nullptr;
    ptrdiff_t yStride = 0;
    uint8_t* u = nullptr;
    ptrdiff_t uStride = 0;
    uint8_t* v = nullptr;
    ptrdiff_t vStride = 0;
};

/// Converts a picture of even width and height to limited range (16 to 235, 16 to 240), alpha left aside; a
/// colour is the mean of its four pixels. The result is the same bit for bit on every processor. Any thread.
void toI420(const PixelBuffer& picture, YuvMatrix matrix, const I420Planes& planes);

}  // namespace platform
