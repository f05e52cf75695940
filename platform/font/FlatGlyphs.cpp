#include "platform/font/FlatGlyphs.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace platform {

namespace {

/// A shape's picture: where in the atlas, and where from the shape's origin, in pixels.
struct Piece {
    int x = 0, y = 0, width = 0, height = 0;
    double left = 0, top = 0;
};

class FlatGlyphMaker {
  public:
    FlatGlyphMaker(const ShapedText& text, double pixelsPerEm)
        : text_(text), unitsPerPixel_(ShapedText::em / pixelsPerEm) {
        for (size_t glyph = 0; glyph < text.glyphCount(); ++glyph)
            pieces_.push_back(load(text.picture(glyph, pixelsPerEm)));
    }

    FlatLetters letters() {
        FlatLetters letters;
        for (const GlyphPlacement& placement : text_.placements()) {
            auto& triangles = text_.isColored(placement.glyph) ? letters.coloredTriangles : letters.triangles;
            if (const auto& piece = pieces_[placement.glyph])
                place(*piece, placement, triangles);
            else
                letters.leftOut.push_back(text_.letterAt(placement));
        }
        letters.atlas = atlas_.takeBitmap();
        return letters;
    }

  private:
    std::optional<Piece> load(const GlyphPicture& picture) {
        if (picture.bitmap.isEmpty()) return Piece{};
        const auto place = atlas_.add(picture.bitmap);
        if (!place) return std::nullopt;
        return Piece{place->x,     place->y,   picture.bitmap.width, picture.bitmap.height,
                     picture.left, picture.top};
    }

    void place(const Piece& piece, const GlyphPlacement& at, std::vector<LetterVertex>& triangles) const {
        if (piece.width == 0) return;
        const auto corner = [&](int right, int down) {
            return LetterVertex{float(at.x + (piece.left + right) * unitsPerPixel_),
                                float(at.y + (piece.top - down) * unitsPerPixel_),
                                0,
                                0,
                                0,
                                1,
                                float(piece.x + right) / float(GlyphAtlas::width),
                                float(piece.y + down) / float(atlas_.bitmap().height)};
        };
        const LetterVertex bottomLeft = corner(0, piece.height), topRight = corner(piece.width, 0);
        triangles.insert(triangles.end(), {bottomLeft, corner(piece.width, piece.height), topRight,  //
                                           bottomLeft, topRight, corner(0, 0)});
    }

    const ShapedText& text_;
    double unitsPerPixel_;
    GlyphAtlas atlas_;
    std::vector<std::optional<Piece>> pieces_;
};

}  // namespace

FlatLetters flatGlyphs(const ShapedText& text, double pixelsPerEm) {
    return FlatGlyphMaker(text, pixelsPerEm).letters();
}

}  // namespace platform
