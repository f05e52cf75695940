#include "platform/font/SolidGlyphs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

#include "platform/font/Bevel.h"
#include "platform/font/GlyphAtlas.h"
#include "platform/font/LetterParts.h"
#include "platform/font/Silhouette.h"
#include "platform/font/Tessellator.h"

namespace platform {

namespace {

/// More than any text that can be read.
constexpr size_t maxVertices = 1'500'000;
constexpr float frontColor = 0.125f, bevelColor = 0.375f, sideColor = 0.625f;

/// Around the shape's origin.
struct Shape {
    std::vector<Rim> rims;
    std::vector<OutlinePoint> face;  ///< triangles, counter-clockwise
    /// The atlas's pixel at the shape's origin, of one with colours of its own.
    std::optional<OutlinePoint> picture;
    bool isLeftOut = false;

    size_t vertices(size_t steps) const {
        size_t lines = 0;
        for (const Rim& rim : rims) lines += rim.corners.size();
        return lines * 6 * (1 + 2 * steps) + face.size() * 2;
    }
};

/// One of the lines that run along a rim: a share of the way into the letter, how far below the front.
struct RimLine {
    double inwards, below;
    double normalOut, normalFront;  ///< of a cut of width and depth 1
};

/// From the side to the front. A flat cut has one direction, a round one is a quarter of a circle.
std::vector<RimLine> profileOf(int steps) {
    if (steps <= 1) return {{0, 1, 1, 1}, {1, 0, 1, 1}};
    std::vector<RimLine> lines;
    for (int i = 0; i <= steps; ++i) {
        const double angle = i * std::numbers::pi / 2 / steps;
        lines.push_back({1 - std::cos(angle), 1 - std::sin(angle), std::cos(angle), std::sin(angle)});
    }
    return lines;
}

class SolidGlyphMaker {
  public:
    SolidGlyphMaker(const ShapedText& text, const LetterParts& parts, const SolidLook& look)
        : text_(text),
          parts_(parts),
          half_(double(look.depth) / 2),
          bevelDepth_(std::min(double(look.bevelDepth), half_)),
          isBevelled_(look.bevelWidth > 0 && bevelDepth_ > 0),
          profile_(profileOf(look.bevelSteps)) {
        for (size_t glyph = 0; glyph < text.glyphCount(); ++glyph)
            shapes_.push_back(shapeOf(glyph, isBevelled_ ? double(look.bevelWidth) : 0));
    }

    SolidLetters letters() {
        SolidLetters letters;
        letters.parts = parts_.parts;
        for (size_t part = 0; part < parts_.parts.size(); ++part) addPart(part, letters);
        letters.atlas = atlas_.takeBitmap();
        return letters;
    }

  private:
    Shape shapeOf(size_t glyph, double bevelWidth) {
        Shape shape;
        std::vector<OutlineContour> contours;
        if (text_.isColored(glyph))
            contours = loadPicture(text_.picture({{GlyphPlacement{.glyph = glyph}}}, ShapedText::em), shape);
        else
            contours = text_.outline(glyph);
        shape.rims = bevelledRims(contours, bevelWidth);
        shape.face = tessellate(frontOf(shape.rims));
        return shape;
    }

    static std::vector<OutlineContour> frontOf(const std::vector<Rim>& rims) {
        std::vector<OutlineContour> contours;
        for (const Rim& rim : rims) {
            OutlineContour& contour = contours.emplace_back(rim.corners);
            for (size_t i = 0; i < contour.size(); ++i)
                contour[i] = {contour[i][0] + rim.inwards[i][0], contour[i][1] + rim.inwards[i][1]};
        }
        return contours;
    }

    /// A picture is cut out along its silhouette. One for which the atlas has no room is left out.
    std::vector<OutlineContour> loadPicture(const GlyphPicture& picture, Shape& shape) {
        if (picture.bitmap.isEmpty()) return {};
        const auto place = atlas_.add(opaquePicture(picture.bitmap));
        shape.isLeftOut = !place;
        if (!place) return {};
        std::vector<OutlineContour> contours = traceSilhouette(picture.bitmap);
        for (OutlineContour& contour : contours)
            for (OutlinePoint& point : contour) point = {point[0] + picture.left, point[1] + picture.top};
        shape.picture = {place->x - picture.left, place->y + picture.top};
        return contours;
    }

    void addPart(size_t part, SolidLetters& letters) {
        const size_t first = letters.letters.corners.size(), firstColored = letters.colored.corners.size();
        std::vector<LetterVertex> faces;
        for (size_t i = 0; i < text_.placements().size(); ++i) {
            if (parts_.ofPlacement[i] != part) continue;
            const GlyphPlacement& placement = text_.placements()[i];
            const Shape& shape = shapes_[placement.glyph];
            const size_t count =
                letters.letters.corners.size() + faces.size() + letters.colored.corners.size();
            if (shape.isLeftOut || count + shape.vertices(isBevelled_ ? profile_.size() : 0) > maxVertices) {
                letters.leftOut.push_back(text_.letterAt(placement));
                continue;
            }
            for (const Rim& rim : shape.rims) addRim(rim, placement, letters.letters.corners);
            addFaces(shape, placement, shape.picture ? letters.colored.corners : faces);
        }
        letters.letters.corners.insert(letters.letters.corners.end(), faces.begin(), faces.end());
        const auto addPiece = [&](LetterLayer& layer, size_t from) {
            if (layer.corners.size() > from)
                layer.pieces.push_back({part, from, layer.corners.size() - from});
        };
        addPiece(letters.letters, first);
        addPiece(letters.colored, firstColored);
    }

    void addRim(const Rim& rim, const GlyphPlacement& place, std::vector<LetterVertex>& corners) const {
        const double below = isBevelled_ ? bevelDepth_ : 0;
        const RimLine side{0, 1, 1, 0};
        addBand(rim, place, {side, below - half_, sideColor}, {side, half_ - below, sideColor}, corners);
        if (!isBevelled_) return;
        for (size_t i = 0; i + 1 < profile_.size(); ++i) {
            const auto at = [&](size_t line, double front) {
                return BandEdge{profile_[line], front * (half_ - profile_[line].below * bevelDepth_),
                                bevelColor, front};
            };
            addBand(rim, place, at(i, 1), at(i + 1, 1), corners);
            addBand(rim, place, at(i + 1, -1), at(i, -1), corners);
        }
    }

    struct BandEdge {
        RimLine line;
        double z;
        float color;
        double front = 1;  ///< 1 or -1: to which side the cut looks
    };

    /// Between two lines along a rim, the first one behind the other.
    void addBand(const Rim& rim, const GlyphPlacement& place, const BandEdge& back, const BandEdge& front,
                 std::vector<LetterVertex>& corners) const {
        for (size_t i = 0; i < rim.corners.size(); ++i) {
            const auto corner = [&](size_t end, const BandEdge& edge) {
                const size_t at = end == 0 ? i : i + 1 == rim.corners.size() ? 0 : i + 1;
                const OutlinePoint& out = rim.normals[i][end];
                const double normalOut = edge.line.normalOut * bevelDepth_,
                             normalFront = edge.line.normalFront * rim.width[at],
                             length = std::hypot(normalOut, normalFront);
                const double outShare = length > 0 ? normalOut / length : 1;
                return LetterVertex{
                    float(place.x + rim.corners[at][0] + edge.line.inwards * rim.inwards[at][0]),
                    float(place.y + rim.corners[at][1] + edge.line.inwards * rim.inwards[at][1]),
                    float(edge.z),
                    float(out[0] * outShare),
                    float(out[1] * outShare),
                    float(length > 0 ? edge.front * normalFront / length : 0),
                    edge.color,
                    0.5f};
            };
            const LetterVertex from = corner(0, back), to = corner(1, back), above = corner(1, front);
            corners.insert(corners.end(), {from, to, above, from, above, corner(0, front)});
        }
    }

    void addFaces(const Shape& shape, const GlyphPlacement& place, std::vector<LetterVertex>& corners) const {
        const auto corner = [&](const OutlinePoint& at, double side) {
            LetterVertex vertex{float(place.x + at[0]),
                                float(place.y + at[1]),
                                float(side * half_),
                                0,
                                0,
                                float(side),
                                frontColor,
                                0.5f};
            if (shape.picture) {
                vertex.u = float(((*shape.picture)[0] + at[0]) / GlyphAtlas::width);
                vertex.v = float(((*shape.picture)[1] - at[1]) / atlas_.bitmap().height);
            }
            return vertex;
        };
        const std::vector<OutlinePoint>& face = shape.face;
        for (size_t i = 0; i + 2 < face.size(); i += 3) {
            for (const size_t k : {i, i + 1, i + 2}) corners.push_back(corner(face[k], 1));
            for (const size_t k : {i + 2, i + 1, i}) corners.push_back(corner(face[k], -1));
        }
    }

    const ShapedText& text_;
    const LetterParts& parts_;
    double half_, bevelDepth_;
    bool isBevelled_;
    std::vector<RimLine> profile_;
    GlyphAtlas atlas_;
    std::vector<Shape> shapes_;
};

}  // namespace

SolidLetters solidGlyphs(const ShapedText& text, const std::optional<LetterUnit>& part,
                         const SolidLook& look) {
    return SolidGlyphMaker(text, letterParts(text, part), look).letters();
}

}  // namespace platform
