// Texts as geometry: flat letters from an atlas, and letters with a depth. A text is shaped once
// (ShapedText); then each of its letters becomes a solid where the shaping has put it, or a rectangle with a
// picture, which letters that overlap share. Any script, emoji, and fonts that step in are as in drawn texts.
// What is to move on its own, a letter, a word or a line, is a part, whose triangles lie together.
// No GL is called. Any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/image/Image.h"
#include "platform/text/TextRasterizer.h"

namespace platform {

enum class LetterUnit { Letter, Word, Line };

/// A text in model units: its letters lie in the x-y plane, the block of its lines around the origin.
struct LetterText {
    std::string text;  ///< UTF-8; malformed bytes become U+FFFD; cut after TextLimits::characters
    /// `size` is the height of a line's letters (the em) in model units. Of a collection of fonts (.ttc) the
    /// first is taken.
    TextFont font;
    TextAlignment alignment = TextAlignment::Left;
    /// Longer lines break as `wrap` says; 0: only line feeds break.
    float lineLength = 0;
    TextWrap wrap = TextWrap::WordsThenCharacters;
    float letterSpacing = 0, lineSpacing = 1;  ///< as those of a TextLayoutDescription
    std::optional<LetterUnit> part = {};       ///< none: the whole text is one
};

/// Corners of triangles, counter-clockwise as seen from where they are visible.
struct LetterVertex {
    float x, y, z;
    float normalX, normalY, normalZ;
    float u, v;
};

/// Width and height of the block of lines, in model units.
struct LetterBlock {
    float width = 0, height = 0;
};

/// What moves on its own, in the order in which it is read. Its box reaches from the lower to the upper edge
/// of its lines.
struct LetterPart {
    float left = 0, right = 0, bottom = 0, top = 0;
    size_t word = 0, line = 0;  ///< of its first letter, counted from 0 over all that is not blank
};

/// Triangles that are drawn one after the other.
struct LetterLayer {
    /// Corners that follow each other and belong to one part.
    struct Piece {
        size_t part, first, count;
    };
    std::vector<LetterVertex> corners;
    std::vector<Piece> pieces;

    bool isEmpty() const { return corners.empty(); }
};

/// How flat letters look. Lengths in model units.
struct FlatLook {
    TextDrawingMode mode = TextDrawingMode::Fill;
    float strokeWidth = 0;  ///< half of it lies outside the letters
    std::optional<TextShadow> shadow = {};
};

/// Letters as pieces of a picture: rectangles of six corners.
struct FlatLetters {
    /// In the order of drawing. Emoji are among the colours and have no outline.
    LetterLayer shadow, outline, letters, colored;
    /// In falling sizes, each half of the one before. What is not coloured is white with its coverage as
    /// alpha; colours are multiplied by alpha; a clear border is around each.
    std::vector<Bitmap> atlas;
    LetterBlock block;
    std::vector<LetterPart> parts;
    std::vector<char32_t> leftOut;  ///< letters that no font has or that the atlas has no room for, each once
};

/// How letters become solids. Lengths in model units.
struct SolidLook {
    float depth = 0;  ///< from front to back, from z = depth / 2 to -depth / 2
    /// The edges between front and sides are cut off: this far into the front, and down the sides. Where a
    /// letter is too thin for it, less is cut off.
    float bevelWidth = 0, bevelDepth = 0;
    int bevelSteps = 1;                            ///< 1: a flat cut; more make it round
    bool frontsApart = false, sidesApart = false;  ///< in layers of their own, with other coordinates
};

/// Letters as solids.
struct SolidLetters {
    /// The colour of a corner is its u, in quarters: 0.125 fronts and backs, 0.375 cut edges, 0.625 sides; v
    /// is 0.5. A part's sides come before its fronts.
    LetterLayer letters;
    /// Where they are apart. u, v of fronts and backs: the place in the block, from its upper left corner; of
    /// sides: the place along their outline, and from front to back.
    LetterLayer fronts, sides;
    /// The fronts of letters with colours of their own, in the atlas; their sides are among the others.
    LetterLayer colored;
    Bitmap atlas;  ///< opaque pictures; empty where there are none
    LetterBlock block;
    std::vector<LetterPart> parts;
    std::vector<char32_t> leftOut;  ///< letters that no font has or that are too many, each once
};

/// Letters are drawn with up to 384 pixels an em, fewer the more different ones the text has.
FlatLetters flatLetters(const LetterText& text, const FlatLook& look = {});
SolidLetters solidLetters(const LetterText& text, const SolidLook& look);

}  // namespace platform
