// Rows of four-channel pixels, copied with or without a change of channel order.
#pragma once

#include <cstdint>
#include <cstring>

namespace multiscene {

/// Copies `count` pixels; `swap` exchanges red and blue. `from` and `to` may be the same place.
inline void copyPixels(const uint8_t* from, uint8_t* to, int count, bool swap) {
    if (!swap) {
        std::memmove(to, from, static_cast<size_t>(count) * 4);
        return;
    }
    for (int i = 0; i < count; ++i, from += 4, to += 4) {
        uint32_t pixel;
        std::memcpy(&pixel, from, 4);
        pixel = (pixel & 0xff00ff00u) | (pixel & 0xffu) << 16 | (pixel >> 16 & 0xffu);
        std::memcpy(to, &pixel, 4);
    }
}

}  // namespace multiscene
