// Texts as geometry: flat letters from an atlas, and letters with a depth. The letters stand one beside the
// other as their font says, with its kerning, from left to right; scripts that join or reorder their letters,
// and emoji, are for drawn texts. No GL is called. Any thread; the work is done one call at a time.
#pragma once

#include <string>
#include <vector>

#include "platform/image/Image.h"
#include "platform/text/TextRasterizer.h"

namespace platform {

/// A text in model units: its letters lie in the x-y plane, the block of its lines around the origin.
struct LetterText {
    std::string text;  ///< UTF-8; malformed bytes become U+FFFD; cut after TextLimits::characters
    /// `size` is the height of a line's letters (the em) in model units. Letters that the font lacks come
    /// from an installed font that has all of them; those that none has are left out. Of a collection of
    /// fonts
    /// (.ttc) the first is taken.
    TextFont font;
    TextAlignment alignment = TextAlignment::Left;  ///< left, middle or right
    /// Longer lines break between words, and inside a word that is too long itself; 0: only line feeds break.
    float lineLength = 0;
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

/// Letters as pieces of a picture.
struct FlatLetters {
    std::vector<LetterVertex> triangles;
    /// White with the letters' coverage as alpha, a clear border around each.
    Bitmap atlas;
    LetterBlock block;
};

/// Letters as solids, from z = -depth / 2 to depth / 2: first all sides, then front and back faces.
struct SolidLetters {
    /// u is 0.25 on front and back faces, 0.75 on sides; v is 0.5.
    std::vector<LetterVertex> triangles;
    LetterBlock block;
};

/// An atlas takes some hundred different letters; further ones are left out.
FlatLetters flatLetters(const LetterText& text);
/// `depth` in model units.
SolidLetters solidLetters(const LetterText& text, float depth);

}  // namespace platform
