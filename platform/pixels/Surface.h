// Pictures that are painted from and painted on: B, G, R, A in memory, colours multiplied by alpha where
// nothing else is said. `pixels` is the top row; where that is the last one in memory, the stride is
// negative. Views only; whoever made the memory owns it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

class ClearBlocks;
class FilmPicture;

/// A picture to paint with.
struct Surface {
    const uint8_t* pixels = nullptr;
    ptrdiff_t stride = 0;  ///< bytes from a row to the one below, a multiple of 4
    int width = 0, height = 0;
    bool opaque = false;                 ///< alpha is 255 everywhere
    const ClearBlocks* clear = nullptr;  ///< where there is nothing; none: not known
    const FilmPicture* film = nullptr;   ///< instead of pixels, as long as nobody needs them

    bool isEmpty() const { return !pixels && !film; }
};

/// A picture to paint on.
struct Canvas {
    uint8_t* pixels = nullptr;
    ptrdiff_t stride = 0;  ///< bytes from a row to the one below, a multiple of 4
    int width = 0, height = 0;
};

}  // namespace platform
