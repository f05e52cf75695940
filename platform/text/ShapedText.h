// A text shaped once, for those who draw it letter by letter: which shape of which font stands where. Scripts
// that join or reorder their letters, right-to-left writing, and fonts that step in for what another lacks
// are done with here.
#pragma once

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/image/Image.h"
#include "platform/text/TextRasterizer.h"

struct _PangoGlyphItem;
struct _cairo;

namespace platform {

class TextLayout;

using OutlinePoint = std::array<double, 2>;
/// A closed line of at least three points; the letter lies to its left.
using OutlineContour = std::vector<OutlinePoint>;

/// A shape as pixels, with a clear border around it. `left` and `top` say, in these pixels and upwards, where
/// the bitmap's upper left corner lies from the shape's origin.
struct GlyphPicture {
    static constexpr int largestSide = 4096;  ///< pixels; what is longer is cut

    Bitmap bitmap;
    double left = 0, top = 0;
};

/// How shapes are drawn as pixels. Lengths in units of which an em has ShapedText::em.
struct GlyphLook {
    bool isFilled = true;
    double strokeWidth = 0;     ///< of a line along the outlines, half of it outside; 0: none
    double blurRadius = 0;      ///< over which the edges fade
    bool isSilhouette = false;  ///< white, even of shapes with colours of their own

    /// How far it reaches beyond the shapes.
    double reach() const;
};

/// A shape that stands somewhere in the text.
struct GlyphPlacement {
    size_t glyph = 0;      ///< the shape's number in its text; letters that look the same share one
    double x = 0, y = 0;   ///< the shape's origin, on the baseline
    size_t textStart = 0;  ///< the byte of the text at which the letters begin that it shows
    size_t line = 0;
    double advance = 0;  ///< the room that it takes along its line
};

/// Where a line reaches upwards and downwards.
struct LineEdges {
    double top, bottom;
};

/// Lengths are units of which an em has ShapedText::em, y points up, and 0,0 is the middle of the block of
/// lines. To be used on the thread that made it.
class ShapedText {
  public:
    static constexpr int em = 96;

    /// `layout.font.size` is not read. `lineLength` as the wrap length of measureText().
    ShapedText(TextLayoutDescription layout, double lineLength);
    ~ShapedText();

    const std::vector<GlyphPlacement>& placements() const { return placements_; }
    const std::vector<LineEdges>& lines() const { return lines_; }
    TextSize size() const { return size_; }  ///< of the block of lines
    /// As it is shown: cut, and what was malformed replaced.
    std::string text() const;
    /// The letter that a placement shows, the first of several.
    char32_t letterAt(const GlyphPlacement& placement) const;
    const std::vector<char32_t>& missingLetters() const;

    size_t glyphCount() const;
    /// A shape with colours of its own, an emoji; it has no outline.
    bool isColored(size_t glyph) const;
    /// Curves are straight pieces.
    std::vector<OutlineContour> outline(size_t glyph) const;
    /// The rectangle around the shape, from its origin; y is its lower edge.
    TextRect ink(size_t glyph) const;
    /// Shapes that stand side by side as one, around the origin of the first, at `pixelsPerEm`: white with
    /// their coverage as alpha, so that none shows where they overlap; or, of one shape alone, the colours of
    /// an emoji. Colours are multiplied by alpha. `border` pixels around it are clear. Empty where there is
    /// no ink.
    GlyphPicture picture(std::span<const GlyphPlacement> letters, double pixelsPerEm,
                         const GlyphLook& look = {}, int border = 2) const;

  private:
    struct Glyph;
    void placeLines(TextAlignment alignment);
    double placeRun(const _PangoGlyphItem& run, double x, double baseline);
    void draw(std::span<const GlyphPlacement> letters, const GlyphLook& look, _cairo* pen) const;
    TextRect ink(std::span<const GlyphPlacement> letters) const;
    size_t numberOf(const Glyph& glyph);

    std::unique_ptr<TextLayout> layout_;
    std::vector<Glyph> glyphs_;
    std::vector<GlyphPlacement> placements_;
    std::vector<LineEdges> lines_;
    TextSize size_;
};

}  // namespace platform
