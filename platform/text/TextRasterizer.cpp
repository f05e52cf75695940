#include "platform/text/TextRasterizer.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/image/Cairo.h"
#include "platform/text/Blur.h"
#include "platform/text/ColorGlyphs.h"
#include "platform/text/TextLayout.h"

namespace platform {

namespace {

struct Point {
    double x, y;
};

/// The share of the free space that lies before the block.
double placementFactor(TextPlacement placement) {
    return placement == TextPlacement::Fill ? 0 : double(placement) / 2;
}

/// Draws the placed lines of one description with a pen whose unit is the box's pixel.
class TextPainter {
  public:
    explicit TextPainter(const TextTextureDescription& description);

    void drawBackground(cairo_t* pen) const;
    void drawText(cairo_t* pen) const;

  private:
    bool isVertical() const { return description_.layout.direction == TextDirection::Vertical; }
    double blockLength() const;
    Point blockStart() const;
    void turnToWritingDirection(cairo_t* pen) const;
    template <typename Visit>
    void forEachLine(Visit visit) const;
    template <typename Visit>
    void forEachRun(Visit visit) const;
    void addOutlines(cairo_t* pen) const;
    void strokeOutlines(cairo_t* pen) const;
    void fill(cairo_t* pen) const;
    void drawColorGlyphs(cairo_t* pen) const;
    void drawColorGlyph(cairo_t* pen, PangoFont* font, PangoGlyphInfo glyph, Point at) const;

    const TextTextureDescription& description_;
    TextLayout layout_;
    bool hasColor_ = false;
};

TextPainter::TextPainter(const TextTextureDescription& description)
    : description_(description),
      layout_(description.layout, description.layout.direction == TextDirection::Vertical
                                      ? description.drawRect.height
                                      : description.drawRect.width) {
    forEachRun(
        [&](PangoFont* font, PangoGlyphString*, Point) { hasColor_ = hasColor_ || hasColorGlyphs(font); });
}

double TextPainter::blockLength() const {
    const TextRect& box = description_.drawRect;
    const bool fill = (isVertical() ? description_.verticalPlacement : description_.horizontalPlacement) ==
                      TextPlacement::Fill;
    return fill ? (isVertical() ? box.height : box.width) : layout_.length();
}

/// The first line's upper left corner, in the coordinates of the writing direction: x along the lines, y
/// across.
Point TextPainter::blockStart() const {
    const double horizontal = placementFactor(description_.horizontalPlacement);
    const double vertical = placementFactor(description_.verticalPlacement);
    const TextRect& box = description_.drawRect;
    if (isVertical())
        return {vertical * (box.height - blockLength()), (1 - horizontal) * (box.width - layout_.breadth())};
    return {horizontal * (box.width - blockLength()), vertical * (box.height - layout_.breadth())};
}

void TextPainter::turnToWritingDirection(cairo_t* pen) const {
    const TextRect& box = description_.drawRect;
    cairo_translate(pen, isVertical() ? box.x + box.width : box.x, box.y);
    if (isVertical()) cairo_rotate(pen, M_PI_2);
}

template <typename Visit>
void TextPainter::forEachLine(Visit visit) const {
    const Point start = blockStart();
    double y = start.y;
    for (const TextLine& line : layout_.lines()) {
        const double factor = alignmentShare(description_.layout.alignment, line.rightToLeft);
        visit(line, Point{start.x + factor * (blockLength() - line.length), y});
        y += line.breadth;
    }
}

/// In columns letters of all fonts are centred on a common line instead of standing on one.
double baselineShift(const PangoLayoutRun* run) {
    if (!(run->item->analysis.flags & PANGO_ANALYSIS_FLAG_CENTERED_BASELINE)) return 0;
    PangoRectangle logical;
    pango_glyph_string_extents(run->glyphs, run->item->analysis.font, nullptr, &logical);
    return -pango_units_to_double(logical.y + logical.height / 2);
}

/// Visits each piece of one font with the place of its first glyph on the baseline.
template <typename Visit>
void TextPainter::forEachRun(Visit visit) const {
    forEachLine([&](const TextLine& line, Point corner) {
        double x = corner.x;
        for (GSList* item = line.glyphs->runs; item; item = item->next) {
            const auto* run = static_cast<PangoLayoutRun*>(item->data);
            visit(run->item->analysis.font, run->glyphs,
                  Point{x, corner.y + line.ascent + baselineShift(run)});
            x += pango_units_to_double(pango_glyph_string_get_width(run->glyphs));
        }
    });
}

void setColor(cairo_t* pen, const Color& color) {
    cairo_set_source_rgba(pen, color.red, color.green, color.blue, color.alpha);
}

void TextPainter::drawBackground(cairo_t* pen) const {
    if (!description_.background) return;
    cairo_save(pen);
    turnToWritingDirection(pen);
    forEachLine([&](const TextLine& line, Point corner) {
        cairo_rectangle(pen, corner.x, corner.y, line.length, line.breadth);
    });
    setColor(pen, *description_.background);
    cairo_fill(pen);
    cairo_restore(pen);
}

void TextPainter::addOutlines(cairo_t* pen) const {
    cairo_new_path(pen);
    forEachRun([&](PangoFont* font, PangoGlyphString* glyphs, Point at) {
        if (hasColorGlyphs(font)) return;
        cairo_move_to(pen, at.x, at.y);
        pango_cairo_glyph_string_path(pen, font, glyphs);
    });
}

void TextPainter::strokeOutlines(cairo_t* pen) const {
    const float width = std::min(description_.strokeWidth, TextLimits::strokeWidth);
    if (!(width > 0)) return;
    addOutlines(pen);
    cairo_set_line_width(pen, width);
    cairo_set_line_join(pen, CAIRO_LINE_JOIN_ROUND);
    setColor(pen, description_.strokeColor);
    cairo_stroke(pen);
}

/// Turns the pen back to upright around the middle of a glyph: in a column letters lie on their side,
/// pictures do not.
void turnUpright(cairo_t* pen, PangoFont* font, const PangoGlyphInfo& glyph, Point at) {
    PangoRectangle ink;
    pango_font_get_glyph_extents(font, glyph.glyph, &ink, nullptr);
    const double x = at.x + pango_units_to_double(glyph.geometry.x_offset + ink.x + ink.width / 2);
    const double y = at.y + pango_units_to_double(glyph.geometry.y_offset + ink.y + ink.height / 2);
    cairo_translate(pen, x, y);
    cairo_rotate(pen, -M_PI_2);
    cairo_translate(pen, -x, -y);
}

void TextPainter::drawColorGlyph(cairo_t* pen, PangoFont* font, PangoGlyphInfo glyph, Point at) const {
    int cluster = 0;
    PangoGlyphString single{1, &glyph, &cluster, 1};
    cairo_save(pen);
    if (isVertical()) turnUpright(pen, font, glyph, at);
    cairo_move_to(pen, at.x, at.y);
    pango_cairo_show_glyph_string(pen, font, &single);
    cairo_restore(pen);
}

void TextPainter::drawColorGlyphs(cairo_t* pen) const {
    cairo_push_group(pen);
    forEachRun([&](PangoFont* font, PangoGlyphString* glyphs, Point at) {
        if (!hasColorGlyphs(font)) return;
        for (int i = 0; i < glyphs->num_glyphs; ++i) {
            drawColorGlyph(pen, font, glyphs->glyphs[i], at);
            at.x += pango_units_to_double(glyphs->glyphs[i].geometry.width);
        }
    });
    cairo_pop_group_to_source(pen);
    cairo_paint_with_alpha(pen, description_.textColor.alpha);
}

/// Letters are filled as outlines and not as cached glyphs, which would snap to whole pixels.
void TextPainter::fill(cairo_t* pen) const {
    addOutlines(pen);
    setColor(pen, description_.textColor);
    cairo_fill(pen);
    if (hasColor_) drawColorGlyphs(pen);
}

void TextPainter::drawText(cairo_t* pen) const {
    const TextDrawingMode mode = description_.drawingMode;
    cairo_save(pen);
    turnToWritingDirection(pen);
    if (mode == TextDrawingMode::Stroke || mode == TextDrawingMode::FillStroke) strokeOutlines(pen);
    if (mode == TextDrawingMode::Fill || mode == TextDrawingMode::FillStroke) fill(pen);
    cairo_restore(pen);
}

CairoSurface makeMask(int width, int height) {
    return CairoSurface(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
}

CairoPen penOn(const CairoSurface& surface, double scale) {
    CairoPen pen = penOn(surface);
    cairo_scale(pen.get(), scale, scale);
    return pen;
}

/// The text's shape, moved and blurred, in the shadow's colour.
void drawShadow(const TextPainter& painter, const TextShadow& shadow, const CairoSurface& target,
                double scale) {
    const int width = cairo_image_surface_get_width(target.get());
    const int height = cairo_image_surface_get_height(target.get());
    const CairoSurface mask = makeMask(width, height);
    const CairoPen maskPen = penOn(mask, scale);
    cairo_translate(maskPen.get(), shadow.offsetX, shadow.offsetY);
    painter.drawText(maskPen.get());
    cairo_surface_flush(mask.get());
    blurChannel(cairo_image_surface_get_data(mask.get()), width, height,
                cairo_image_surface_get_stride(mask.get()),
                std::min(shadow.blurRadius, TextLimits::blurRadius) * scale);
    cairo_surface_mark_dirty(mask.get());
    const CairoPen pen = penOn(target);
    setColor(pen.get(), shadow.color);
    cairo_mask_surface(pen.get(), mask.get(), 0, 0);
}

void swapRedAndBlue(std::vector<uint8_t>& pixels) {
    for (size_t i = 0; i < pixels.size(); i += 4) std::swap(pixels[i], pixels[i + 2]);
}

}  // namespace

Bitmap drawText(const TextTextureDescription& description, int bitmapWidth, int bitmapHeight, double scale) {
    Bitmap bitmap(std::max(0, bitmapWidth), std::max(0, bitmapHeight));
    const double boxScale = scale * description.drawScale;
    if (bitmap.isEmpty() || !(boxScale > 0) || !std::isfinite(boxScale)) return bitmap;
    const TextPainter painter(description);
    {
        const CairoSurface surface = surfaceOver(bitmap);
        const CairoPen pen = penOn(surface, boxScale);
        painter.drawBackground(pen.get());
        if (description.shadow) drawShadow(painter, *description.shadow, surface, boxScale);
        painter.drawText(pen.get());
        cairo_surface_flush(surface.get());
    }
    swapRedAndBlue(bitmap.rgba);
    return bitmap;
}

}  // namespace platform
