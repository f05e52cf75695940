#include "platform/image/PhotoFilter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "platform/image/Cairo.h"

namespace platform {

namespace {

void paintPicture(cairo_t* pen, const Bitmap& picture) {
    const CairoSurface surface = surfaceOver(picture);
    cairo_set_source_surface(pen, surface.get(), 0, 0);
    cairo_paint(pen);
    // The source would outlive the surface's memory.
    cairo_set_source_rgba(pen, 0, 0, 0, 0);
}

/// A length that fits the picture: the corners of half the shorter side meet, a stroke of half of it covers
/// all. What is no number is none.
double fitting(float length, const Bitmap& photo) {
    if (!(length > 0)) return 0;
    return std::min(double(length), std::min(photo.width, photo.height) / 2.0);
}

/// Four arcs of the given radius, each tangent to two edges.
void addRoundedRectangle(cairo_t* pen, double width, double height, double radius) {
    if (radius <= 0) return cairo_rectangle(pen, 0, 0, width, height);
    struct Corner {
        double x, y, startAngle;
    };
    const std::array<Corner, 4> corners{{{width - radius, height - radius, 0},
                                         {radius, height - radius, M_PI_2},
                                         {radius, radius, M_PI},
                                         {width - radius, radius, 3 * M_PI_2}}};
    cairo_move_to(pen, width, height / 2);
    for (const Corner& corner : corners)
        cairo_arc(pen, corner.x, corner.y, radius, corner.startAngle, corner.startAngle + M_PI_2);
    cairo_close_path(pen);
}

void drawSynthesis(cairo_t* pen, const PhotoFilter&, const Bitmap& photo, const Bitmap* overlay) {
    paintPicture(pen, photo);
    if (overlay && overlay->size() == photo.size()) paintPicture(pen, *overlay);
}

void drawRounded(cairo_t* pen, const PhotoFilter& filter, const Bitmap& photo, const Bitmap*) {
    addRoundedRectangle(pen, photo.width, photo.height, fitting(filter.cornerRadius, photo));
    cairo_clip(pen);
    paintPicture(pen, photo);
}

void drawRoundedAndStroked(cairo_t* pen, const PhotoFilter& filter, const Bitmap& photo,
                           const Bitmap* overlay) {
    drawRounded(pen, filter, photo, overlay);
    if (!(filter.cornerRadius > 0) || !(filter.strokeWidth > 0)) return;
    addRoundedRectangle(pen, photo.width, photo.height, fitting(filter.cornerRadius, photo));
    cairo_set_line_width(pen, fitting(filter.strokeWidth, photo));
    const Color& color = filter.strokeColor;
    cairo_set_source_rgba(pen, color.blue, color.green, color.red, color.alpha);
    cairo_stroke(pen);
}

struct FilterType {
    std::string_view name;
    void (*draw)(cairo_t*, const PhotoFilter&, const Bitmap& photo, const Bitmap* overlay);
};

constexpr FilterType filterTypes[] = {
    {"imageSynthesis", drawSynthesis},
    {"circularAndStroke", drawRoundedAndStroked},
    {"roundRect", drawRounded},
};

}  // namespace

Bitmap drawPhotoFilter(const PhotoFilter& filter, const Bitmap& photo, const Bitmap* overlay) {
    Bitmap canvas(photo.width, photo.height);
    if (canvas.isEmpty()) return canvas;
    const CairoSurface surface = surfaceOver(canvas);
    const CairoPen pen = penOn(surface);
    for (const FilterType& type : filterTypes)
        if (type.name == filter.type) type.draw(pen.get(), filter, photo, overlay);
    cairo_surface_flush(surface.get());
    return canvas;
}

}  // namespace platform
