#include "platform/font/FlatGlyphs.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/font/GlyphAtlas.h"
#include "platform/font/LetterGroups.h"
#include "platform/font/LetterParts.h"

namespace platform {

namespace {

/// Pixels an em, each half of the one before. The atlas has room for every letter that a text can have in the
/// least of them.
constexpr int finest = 384, leastResolution = 24;
/// Units: with all that may be around it, it fits the atlas in most resolutions.
constexpr double longestGroup = 10 * ShapedText::em;
/// Pixels around each picture: filtering must not meet its neighbour.
constexpr int leastBorder = 2;

/// A picture of letters: where in the atlas, and where from the first letter's origin, in pixels.
struct Piece {
    int x = 0, y = 0, width = 0, height = 0;
    double left = 0, top = 0;
    double unitsPerPixel = 0;
};

using Group = std::span<const GlyphPlacement>;
/// Letters in one look.
using Picture = std::pair<size_t, LetterForm>;

/// What is drawn of a letter, from the back.
struct Pass {
    GlyphLook look;
    LetterLayer FlatLetters::*layer;
    double right = 0, down = 0;  ///< units
    bool takesLetters = true, takesColored = true;
};

std::vector<Pass> passesOf(const FlatLook& look) {
    const bool isStroked =
        (look.mode == TextDrawingMode::Stroke || look.mode == TextDrawingMode::FillStroke) &&
        look.strokeWidth > 0;
    const bool isFilled = look.mode == TextDrawingMode::Fill || look.mode == TextDrawingMode::FillStroke;
    const double stroke = isStroked ? double(look.strokeWidth) : 0;
    std::vector<Pass> passes;
    if (look.shadow && (isFilled || isStroked))
        passes.push_back({.look = {.isFilled = isFilled,
                                   .strokeWidth = stroke,
                                   .blurRadius = double(look.shadow->blurRadius),
                                   .isSilhouette = true},
                          .layer = &FlatLetters::shadow,
                          .right = double(look.shadow->offsetX),
                          .down = double(look.shadow->offsetY),
                          .takesColored = isFilled});
    if (isStroked)
        passes.push_back({.look = {.isFilled = false, .strokeWidth = stroke},
                          .layer = &FlatLetters::outline,
                          .takesColored = false});
    if (isFilled) passes.push_back({.look = {}, .layer = &FlatLetters::letters, .takesColored = false});
    if (isFilled) passes.push_back({.look = {}, .layer = &FlatLetters::colored, .takesLetters = false});
    return passes;
}

class FlatGlyphMaker {
  public:
    FlatGlyphMaker(const ShapedText& text, const LetterParts& parts, const std::vector<Group>& groups,
                   const std::vector<Pass>& passes, int pixelsPerEm)
        : text_(text),
          parts_(parts),
          groups_(groups),
          passes_(passes),
          pixelsPerEm_(pixelsPerEm),
          smallest_(pixelsPerEm / leastResolution),
          atlas_(smallest_) {}

    /// Nothing when there was no room for all of them, unless that is to be so.
    std::optional<FlatLetters> letters(bool mayLeaveOut) {
        for (size_t pass = 0; pass < passes_.size(); ++pass)
            for (const Group& group : groups_)
                if (isIn(passes_[pass], group) && !load(pass, group) && !mayLeaveOut) return std::nullopt;
        FlatLetters letters;
        for (size_t pass = 0; pass < passes_.size(); ++pass)
            for (const Group& group : groups_)
                if (isIn(passes_[pass], group)) place(pass, group, letters);
        if (!atlas_.bitmap().isEmpty())
            letters.atlas = halvedPictures(atlas_.takeBitmap(), std::bit_width(unsigned(smallest_)));
        return letters;
    }

  private:
    bool isIn(const Pass& pass, const Group& group) const {
        return text_.isColored(group[0].glyph) ? pass.takesColored : pass.takesLetters;
    }

    /// What is blurred needs fewer pixels.
    int resolutionOf(const GlyphLook& look) const {
        constexpr double enough = 6;  // pixels over which an edge fades
        int resolution = pixelsPerEm_;
        while (resolution > leastResolution && look.blurRadius * resolution > 2 * enough * ShapedText::em)
            resolution /= 2;
        return resolution;
    }

    bool load(size_t pass, const Group& letters) {
        const auto [piece, isNew] = pieces_.try_emplace(Picture{pass, formOf(letters)});
        if (!isNew) return piece->second.has_value();
        const int resolution = resolutionOf(passes_[pass].look);
        const GlyphPicture picture =
            text_.picture(letters, resolution, passes_[pass].look, leastBorder * smallest_);
        if (picture.bitmap.isEmpty())
            piece->second = Piece{};
        else if (const auto at = atlas_.add(picture.bitmap))
            piece->second = Piece{at->x,
                                  at->y,
                                  picture.bitmap.width,
                                  picture.bitmap.height,
                                  picture.left,
                                  picture.top,
                                  double(ShapedText::em) / resolution};
        return piece->second.has_value();
    }

    void place(size_t pass, const Group& letters, FlatLetters& result) const {
        const std::optional<Piece>& piece = pieces_.at(Picture{pass, formOf(letters)});
        if (!piece)
            for (const GlyphPlacement& letter : letters) result.leftOut.push_back(text_.letterAt(letter));
        if (!piece || piece->width == 0) return;
        LetterLayer& layer = result.*passes_[pass].layer;
        const size_t first = layer.corners.size();
        addCorners(*piece, passes_[pass], letters[0], layer.corners);
        const size_t part = parts_.ofPlacement[size_t(&letters[0] - text_.placements().data())];
        if (!layer.pieces.empty() && layer.pieces.back().part == part)
            layer.pieces.back().count += layer.corners.size() - first;
        else
            layer.pieces.push_back({part, first, layer.corners.size() - first});
    }

    void addCorners(const Piece& piece, const Pass& pass, const GlyphPlacement& at,
                    std::vector<LetterVertex>& corners) const {
        const auto corner = [&](int right, int down) {
            return LetterVertex{float(at.x + pass.right + (piece.left + right) * piece.unitsPerPixel),
                                float(at.y - pass.down + (piece.top - down) * piece.unitsPerPixel),
                                0,
                                0,
                                0,
                                1,
                                float(piece.x + right) / float(GlyphAtlas::width),
                                float(piece.y + down) / float(atlas_.bitmap().height)};
        };
        const LetterVertex bottomLeft = corner(0, piece.height), topRight = corner(piece.width, 0);
        corners.insert(corners.end(), {bottomLeft, corner(piece.width, piece.height), topRight,  //
                                       bottomLeft, topRight, corner(0, 0)});
    }

    const ShapedText& text_;
    const LetterParts& parts_;
    const std::vector<Group>& groups_;
    const std::vector<Pass>& passes_;
    int pixelsPerEm_;
    int smallest_;  ///< how many pixels become one in the smallest picture of the atlas
    GlyphAtlas atlas_;
    std::map<Picture, std::optional<Piece>> pieces_;  ///< none: there was no room
};

}  // namespace

FlatLetters flatGlyphs(const ShapedText& text, const std::optional<LetterUnit>& part, const FlatLook& look) {
    const LetterParts parts = letterParts(text, part);
    const std::vector<Pass> passes = passesOf(look);
    double reach = 0;
    for (const Pass& pass : passes) reach = std::max(reach, pass.look.reach());
    const double longest = std::max<double>(ShapedText::em, longestGroup - 2 * reach);
    const auto groups = letterGroups(text, parts.ofPlacement, longest);
    for (int resolution = finest;; resolution /= 2) {
        const bool isLeast = resolution == leastResolution;
        if (auto letters = FlatGlyphMaker(text, parts, groups, passes, resolution).letters(isLeast)) {
            letters->parts = parts.parts;
            return *std::move(letters);
        }
    }
}

}  // namespace platform
