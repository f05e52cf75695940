// Decoded pictures as they are drawn: four bytes a pixel, opaque.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

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

/// Converts pictures row by row. Halved colours are interpolated between their neighbours (they lie in the
/// middle of their pixels), which spares keyed edges the stairs. Within 1 of 255 of the exact colour, and the
/// same bit for bit on every processor. One thread at a time.
class YuvConverter {
  public:
    /// Sets the size of `target` and fills it.
    void convert(const YuvPicture& picture, PixelBuffer& target);

  private:
    std::vector<uint16_t> mixed_, blueness_, redness_;  ///< rows
};

}  // namespace platform
