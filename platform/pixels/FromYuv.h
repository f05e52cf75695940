// Decoded pictures as they are drawn: four bytes a pixel, opaque.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/media/PixelBuffer.h"
#include "platform/pixels/YuvMatrix.h"

namespace platform {

/// A picture in planes of brightness, blueness and redness.
struct YuvPicture {
    std::array<const uint8_t*, 3> planes{};
    std::array<ptrdiff_t, 3> strides{};  ///< bytes
    int width = 0, height = 0;           ///< pixels; any, odd ones too
    int depth = 8;  ///< bits a sample, 8 to 12; above 8 a sample has two bytes, little end first
    bool halfWidth = true, halfHeight = true;  ///< of the colour planes, rounded up
    YuvMatrix matrix = YuvMatrix::BT709;
    bool fullRange = false;
};

// Halved colours are interpolated between their neighbours (they lie in the middle of their pixels), which
// spares keyed edges the stairs. Within 1 of 255 of the exact colour, and the same bit for bit on every
// processor, in whatever parts a picture is converted.

/// The whole picture; sets the size of `target`.
void yuvToPixels(const YuvPicture& picture, PixelBuffer& target);
/// The pixels of a row from `from` to before `to`, all within the picture.
void yuvToPixels(const YuvPicture& picture, int row, int from, int to, uint8_t* pixels);

}  // namespace platform
