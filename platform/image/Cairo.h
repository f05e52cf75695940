// Private to platform/image and platform/text: owners of Cairo's objects.
#pragma once

#include <cairo.h>

#include <memory>

#include "platform/image/Image.h"

namespace platform {

struct CairoRelease {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* pen) const { cairo_destroy(pen); }
    void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
};
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoRelease>;
using CairoPen = std::unique_ptr<cairo_t, CairoRelease>;
using CairoPath = std::unique_ptr<cairo_path_t, CairoRelease>;

/// Cairo draws straight into the bitmap's memory, which must outlive the surface. It takes the four bytes for
/// blue, green, red, alpha: all blending treats the colours alike, so only colours that are named have to be
/// swapped.
inline CairoSurface surfaceOver(const Bitmap& bitmap) {
    return CairoSurface(cairo_image_surface_create_for_data(const_cast<uint8_t*>(bitmap.rgba.data()),
                                                            CAIRO_FORMAT_ARGB32, bitmap.width, bitmap.height,
                                                            bitmap.stride()));
}

inline CairoPen penOn(const CairoSurface& surface) { return CairoPen(cairo_create(surface.get())); }

}  // namespace platform
