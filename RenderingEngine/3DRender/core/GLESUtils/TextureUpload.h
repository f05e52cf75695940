// Pictures in memory into textures. All operations need the context current and leave the texture bound to
// the active texture unit.
#pragma once

#include <span>

#include "platform/pixels/Surface.h"

namespace multiscene {

enum class TextureWrap { Repeat, ClampToEdge };

/// Wraps the bound texture at its edges.
void setTextureWrap(TextureWrap wrap);

/// Gives the texture storage and pixels and linear filters; several pictures are its levels, the largest
/// first.
void uploadTexture(unsigned int texture, std::span<const platform::Surface> levels);

/// Replaces all pixels of a texture that uploadTexture() gave one picture of the same size.
void updateTexture(unsigned int texture, const platform::Surface& picture);

}  // namespace multiscene
