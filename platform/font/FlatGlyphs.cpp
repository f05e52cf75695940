#include "platform/font/FlatGlyphs.h"

#include <cmath>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "platform/font/LetterGroups.h"

namespace platform {

namespace {

/// A picture of letters: where in the atlas, and where from the first letter's origin, in pixels.
struct Piece {
    int x = 0, y = 0, width = 0, height = 0;
    double left = 0, top = 0;
};

/// Letters and their distances from the first of them: what looks the same has the same picture.
using Look = std::vector<std::tuple<size_t, long, long>>;

Look lookOf(std::span<const GlyphPlacement> letters) {
    constexpr double steps = 64;  // of one unit: finer than anything that is seen
    Look look;
    for (const GlyphPlacement& letter : letters)
        look.emplace_back(letter.glyph, std::lround((letter.x - letters[0].x) * steps),
                          std::lround((letter.y - letters[0].y) * steps));
    return look;
}

class FlatGlyphMaker {
  public:
    FlatGlyphMaker(const ShapedText& text, double pixelsPerEm)
        : text_(text), pixelsPerEm_(pixelsPerEm), unitsPerPixel_(ShapedText::em / pixelsPerEm) {}

    FlatLetters letters() {
        const auto groups = letterGroups(text_, longestGroup * unitsPerPixel_);
        for (const auto& group : groups) load(group);
        FlatLetters letters;
        for (const auto& group : groups) {
            auto& triangles = text_.isColored(group[0].glyph) ? letters.coloredTriangles : letters.triangles;
            if (const auto& piece = pieces_[lookOf(group)])
                place(*piece, group[0], triangles);
            else
                for (const GlyphPlacement& letter : group) letters.leftOut.push_back(text_.letterAt(letter));
        }
        letters.atlas = atlas_.takeBitmap();
        return letters;
    }

  private:
    static constexpr int longestGroup = GlyphAtlas::width - 8;  ///< pixels: with its border it fits the atlas

    void load(std::span<const GlyphPlacement> letters) {
        const auto [piece, isNew] = pieces_.try_emplace(lookOf(letters));
        if (!isNew) return;
        const GlyphPicture picture = text_.picture(letters, pixelsPerEm_);
        if (picture.bitmap.isEmpty())
            piece->second = Piece{};
        else if (const auto at = atlas_.add(picture.bitmap))
            piece->second =
                Piece{at->x, at->y, picture.bitmap.width, picture.bitmap.height, picture.left, picture.top};
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
    double pixelsPerEm_, unitsPerPixel_;
    GlyphAtlas atlas_;
    std::map<Look, std::optional<Piece>> pieces_;  ///< none: there was no room
};

}  // namespace

FlatLetters flatGlyphs(const ShapedText& text, double pixelsPerEm) {
    return FlatGlyphMaker(text, pixelsPerEm).letters();
}

}  // namespace platform
