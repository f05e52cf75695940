// Pictures in memory into textures. All operations need the context current and leave the texture bound to
// the active texture unit.
#pragma once

#include <cstdint>

namespace multiscene {

enum class PixelOrder { RGBA, BGRA };

/// Eight bits a channel, four channels; the first row is the first in memory. The pixels stay the caller's.
struct BitmapView {
    const uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;  ///< bytes from row to row, at least width * 4
    PixelOrder order = PixelOrder::RGBA;
};

enum class TextureWrap { Repeat, ClampToEdge };

/// Wraps the bound texture at its edges.
void setTextureWrap(TextureWrap wrap);

/// Gives the texture storage and pixels at level 0 and linear filters. Wrapping is left at GL's default,
/// Repeat, or set to the edge.
void uploadTexture(unsigned int texture, const BitmapView& bitmap, TextureWrap wrap = TextureWrap::Repeat);

/// Replaces all pixels of a texture that uploadTexture() gave a bitmap of the same size and order.
void updateTexture(unsigned int texture, const BitmapView& bitmap);

}  // namespace multiscene
