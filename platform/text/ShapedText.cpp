#include "platform/text/ShapedText.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>

#include "platform/image/Cairo.h"
#include "platform/text/Blur.h"
#include "platform/text/ColorGlyphs.h"
#include "platform/text/TextLayout.h"

namespace platform {

namespace {

/// How far the straight pieces may leave a curve, in units of an em: invisible in letters that fill a
/// picture.
constexpr double curveTolerance = 0.02;

struct FontDeleter {
    void operator()(PangoFont* font) const { g_object_unref(font); }
};

/// Twice what the line encloses, negative when that lies on its right.
double area(const OutlineContour& contour) {
    double sum = 0;
    for (size_t i = 0; i < contour.size(); ++i) {
        const OutlinePoint &from = contour[i], &to = contour[(i + 1) % contour.size()];
        sum += from[0] * to[1] - to[0] * from[1];
    }
    return sum;
}

/// The closed lines of a flat path, with y upwards.
std::vector<OutlineContour> readContours(const cairo_path_t& path) {
    std::vector<OutlineContour> contours;
    for (int i = 0; i < path.num_data; i += path.data[i].header.length) {
        const cairo_path_data_t* data = &path.data[i];
        if (data->header.type == CAIRO_PATH_MOVE_TO) contours.emplace_back();
        if (data->header.type != CAIRO_PATH_CLOSE_PATH)
            contours.back().push_back({data[1].point.x, -data[1].point.y});
    }
    for (OutlineContour& contour : contours)
        if (contour.size() > 1 && contour.front() == contour.back()) contour.pop_back();
    std::erase_if(contours, [](const OutlineContour& contour) { return contour.size() < 3; });
    return contours;
}

/// Fonts differ in the side on which their letters lie.
void turnToTheLeft(std::vector<OutlineContour>& contours) {
    double sum = 0;
    for (const OutlineContour& contour : contours) sum += area(contour);
    if (sum >= 0) return;
    for (OutlineContour& contour : contours) std::ranges::reverse(contour);
}

}  // namespace

struct ShapedText::Glyph {
    std::shared_ptr<PangoFont> font;
    PangoGlyph number;
    bool isColored;

    /// Alone.
    PangoGlyphInfo info() const {
        PangoGlyphInfo info{};
        info.glyph = number;
        return info;
    }
    void addOutline(cairo_t* pen, double x, double y) const {
        place(pen, x, y, pango_cairo_glyph_string_path);
    }
    void show(cairo_t* pen, double x, double y) const { place(pen, x, y, pango_cairo_show_glyph_string); }

  private:
    void place(cairo_t* pen, double x, double y,
               void (*draw)(cairo_t*, PangoFont*, PangoGlyphString*)) const {
        PangoGlyphInfo glyph = info();
        int cluster = 0;
        PangoGlyphString single{1, &glyph, &cluster, 1};
        cairo_move_to(pen, x, y);
        draw(pen, font.get(), &single);
    }
};

ShapedText::ShapedText(TextLayoutDescription layout, double lineLength) {
    layout.font.size = em;
    layout.direction = TextDirection::Horizontal;
    layout_ = std::make_unique<TextLayout>(layout, lineLength);
    size_ = {layout_->length(), layout_->breadth()};
    placeLines(layout.alignment);
}

ShapedText::~ShapedText() = default;

void ShapedText::placeLines(TextAlignment alignment) {
    double top = size_.height / 2;
    for (const TextLine& line : layout_->lines()) {
        const double share = alignmentShare(alignment, line.rightToLeft);
        double x = share * (size_.width - line.length) - size_.width / 2;
        lines_.push_back({top, top - line.breadth});
        for (GSList* item = line.glyphs->runs; item; item = item->next)
            x = placeRun(*static_cast<PangoLayoutRun*>(item->data), x, top - line.ascent);
        top -= line.breadth;
    }
}

/// Returns where the next piece of the line begins.
double ShapedText::placeRun(const _PangoGlyphItem& run, double x, double baseline) {
    PangoFont* font = run.item->analysis.font;
    const bool isColored = hasColorGlyphs(font);
    const std::shared_ptr<PangoFont> owned(static_cast<PangoFont*>(g_object_ref(font)), FontDeleter());
    for (int i = 0; i < run.glyphs->num_glyphs; ++i) {
        const PangoGlyphInfo& glyph = run.glyphs->glyphs[i];
        const double up = -pango_units_to_double(glyph.geometry.y_offset);
        if (glyph.glyph != PANGO_GLYPH_EMPTY)
            placements_.push_back({numberOf({owned, glyph.glyph, isColored}),
                                   x + pango_units_to_double(glyph.geometry.x_offset), baseline + up,
                                   size_t(run.item->offset + run.glyphs->log_clusters[i]), lines_.size() - 1,
                                   pango_units_to_double(glyph.geometry.width)});
        x += pango_units_to_double(glyph.geometry.width);
    }
    return x;
}

size_t ShapedText::numberOf(const Glyph& glyph) {
    const auto found = std::ranges::find_if(glyphs_, [&](const Glyph& known) {
        return known.font == glyph.font && known.number == glyph.number;
    });
    if (found != glyphs_.end()) return size_t(found - glyphs_.begin());
    glyphs_.push_back(glyph);
    return glyphs_.size() - 1;
}

std::string ShapedText::text() const { return layout_->text(); }

char32_t ShapedText::letterAt(const GlyphPlacement& placement) const {
    return g_utf8_get_char(layout_->text() + placement.textStart);
}

const std::vector<char32_t>& ShapedText::missingLetters() const { return layout_->missingLetters(); }

size_t ShapedText::glyphCount() const { return glyphs_.size(); }

bool ShapedText::isColored(size_t glyph) const { return glyphs_[glyph].isColored; }

std::vector<OutlineContour> ShapedText::outline(size_t glyph) const {
    if (isColored(glyph)) return {};
    const CairoSurface surface(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    const CairoPen pen = penOn(surface);
    const TextRect rect = ink(glyph);
    const double size = std::max({1.0, rect.width / em, rect.height / em});
    cairo_set_tolerance(pen.get(), curveTolerance * size);
    glyphs_[glyph].addOutline(pen.get(), 0, 0);
    const CairoPath path(cairo_copy_path_flat(pen.get()));
    std::vector<OutlineContour> contours = readContours(*path);
    turnToTheLeft(contours);
    return contours;
}

TextRect ShapedText::ink(size_t glyph) const {
    PangoRectangle ink;
    pango_font_get_glyph_extents(glyphs_[glyph].font.get(), glyphs_[glyph].number, &ink, nullptr);
    return {pango_units_to_double(ink.x), -pango_units_to_double(ink.y + ink.height),
            pango_units_to_double(ink.width), pango_units_to_double(ink.height)};
}

TextRect ShapedText::ink(std::span<const GlyphPlacement> letters) const {
    double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY;
    for (const GlyphPlacement& letter : letters) {
        const TextRect rect = ink(letter.glyph);
        if (rect.width <= 0 || rect.height <= 0) continue;
        const double x = letter.x - letters[0].x + rect.x, y = letter.y - letters[0].y + rect.y;
        left = std::min(left, x), right = std::max(right, x + rect.width);
        bottom = std::min(bottom, y), top = std::max(top, y + rect.height);
    }
    return right > left ? TextRect{left, bottom, right - left, top - bottom} : TextRect{};
}

double GlyphLook::reach() const {
    constexpr double blurReach = 1.5;  // of its radius
    return strokeWidth / 2 + blurRadius * blurReach;
}

void ShapedText::draw(std::span<const GlyphPlacement> letters, const GlyphLook& look, cairo_t* pen) const {
    cairo_set_source_rgb(pen, 1, 1, 1);
    for (const GlyphPlacement& letter : letters) {
        const double x = letter.x - letters[0].x, y = letters[0].y - letter.y;
        if (!isColored(letter.glyph))
            glyphs_[letter.glyph].addOutline(pen, x, y);
        else if (look.isFilled)
            glyphs_[letter.glyph].show(pen, x, y);
    }
    if (look.isFilled) cairo_fill_preserve(pen);
    if (look.strokeWidth > 0) {
        cairo_set_line_width(pen, look.strokeWidth);
        cairo_set_line_join(pen, CAIRO_LINE_JOIN_ROUND);
        cairo_stroke(pen);
    }
    cairo_new_path(pen);
}

namespace {

/// White where there was any colour, and blurred.
void makeSilhouette(Bitmap& bitmap, double blurRadius) {
    std::vector<uint8_t> alpha(bitmap.rgba.size() / 4);
    for (size_t i = 0; i < alpha.size(); ++i) alpha[i] = bitmap.rgba[4 * i + 3];
    blurChannel(alpha.data(), bitmap.width, bitmap.height, bitmap.width, blurRadius);
    for (size_t i = 0; i < bitmap.rgba.size(); ++i) bitmap.rgba[i] = alpha[i / 4];
}

}  // namespace

GlyphPicture ShapedText::picture(std::span<const GlyphPlacement> letters, double pixelsPerEm,
                                 const GlyphLook& look, int border) const {
    const double scale = pixelsPerEm / em, reach = look.reach();
    const TextRect rect = ink(letters);
    if (rect.width <= 0) return {};
    const double left = std::floor((rect.x - reach) * scale) - border;
    const double top = std::ceil((rect.y + rect.height + reach) * scale) + border;
    const double right = std::ceil((rect.x + rect.width + reach) * scale) + border;
    const double bottom = std::floor((rect.y - reach) * scale) - border;
    GlyphPicture picture{Bitmap(int(std::min<double>(right - left, GlyphPicture::largestSide)),
                                int(std::min<double>(top - bottom, GlyphPicture::largestSide))),
                         left, top};
    Bitmap& bitmap = picture.bitmap;
    const CairoSurface surface = surfaceOver(bitmap);
    const CairoPen pen = penOn(surface);
    cairo_translate(pen.get(), -left, top);
    cairo_scale(pen.get(), scale, scale);
    draw(letters, look, pen.get());
    cairo_surface_flush(surface.get());
    for (size_t i = 0; i < bitmap.rgba.size(); i += 4) std::swap(bitmap.rgba[i], bitmap.rgba[i + 2]);
    if (look.isSilhouette) makeSilhouette(bitmap, look.blurRadius * scale);
    return picture;
}

}  // namespace platform
