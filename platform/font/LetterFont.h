// One font, letter by letter. For the files of this folder.
#pragma once

#include <memory>

#include "platform/font/FontSource.h"

struct FT_GlyphSlotRec_;

namespace platform {

/// Takes the letters of a font: each is loaded once, then placed as often as it is drawn.
class GlyphSink {
  public:
    virtual ~GlyphSink() = default;
    /// `outline`: the letter as it was loaded, valid during the call. `glyph` is its number in the font.
    virtual void load(unsigned int glyph, FT_GlyphSlotRec_* outline) = 0;
    /// x, y: the letter's origin on its baseline.
    virtual void place(unsigned int glyph, double x, double y) = 0;
};

/// Lengths are units of which an em has LetterFont::em.
class LetterFont {
  public:
    static constexpr unsigned int em = 96;

    /// The sink outlives the font. A source that is no font gives a font without letters.
    LetterFont(FontSource source, GlyphSink& sink);
    ~LetterFont();

    double ascender() const;
    double descender() const;  ///< below the baseline, so negative
    bool has(char32_t letter) const;
    /// From the letter to the next; 0 for one that the font lacks.
    double advance(char32_t letter) const;
    double kerning(char32_t left, char32_t right) const;
    /// Hands the letter to the sink; one that the font lacks is left out.
    void draw(char32_t letter, double x, double y) const;

  private:
    class Font;
    FontSource source_;  // the font reads its bytes
    std::unique_ptr<Font> font_;
};

}  // namespace platform
