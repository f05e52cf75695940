// Texts as geometry: flat letters from an atlas, and letters with a depth. A text is shaped once
// (ShapedText); then each of its letters becomes a solid where the shaping has put it, or a rectangle with a
// picture, which letters that overlap share. Any script, emoji, and fonts that step in are as in drawn texts.
// No GL is called. Any thread.
#pragma once

#include <string>
#include <vector>

#include "platform/image/Image.h"
#include "platform/text/TextRasterizer.h"

namespace platform {

/// A text in model units: its letters lie in the x-y plane, the block of its lines around the origin.
struct LetterText {
    std::string text;  ///< UTF-8; malformed bytes become U+FFFD; cut after TextLimits::characters
    /// `size` is the height of a line's letters (the em) in model units. Of a collection of fonts (.ttc) the
    /// first is taken.
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
    std::vector<LetterVertex> coloredTriangles;  ///< those of letters with colours of their own: emoji
    /// Letters are white with their coverage as alpha; colours are multiplied by alpha; a clear border is
    /// around each.
    Bitmap atlas;
    LetterBlock block;
    std::vector<char32_t> leftOut;  ///< letters that no font has or that the atlas has no room for, each once
};

/// Letters as solids, from z = -depth / 2 to depth / 2.
struct SolidLetters {
    /// First all sides, then front and back faces. u is 0.25 on faces, 0.75 on sides; v is 0.5.
    std::vector<LetterVertex> triangles;
    /// The faces of letters with colours of their own, in the atlas; their sides are among the others.
    std::vector<LetterVertex> coloredTriangles;
    Bitmap atlas;  ///< opaque pictures; empty where there are none
    LetterBlock block;
    std::vector<char32_t> leftOut;  ///< letters that no font has or that are too many, each once
};

/// Letters are drawn with ShapedText::em pixels an em, fewer where the text has several hundred different
/// ones.
FlatLetters flatLetters(const LetterText& text);
/// `depth` in model units.
SolidLetters solidLetters(const LetterText& text, float depth);

}  // namespace platform
