#include "platform/font/SolidGlyphs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <optional>
#include <span>

#include "platform/base/Limits.h"
#include "platform/font/Bevel.h"
#include "platform/font/GlyphAtlas.h"
#include "platform/font/LetterGroups.h"
#include "platform/font/LetterParts.h"
#include "platform/font/Silhouette.h"
#include "platform/font/Tessellator.h"

namespace platform {

namespace {

/// More than any text that can be read.
constexpr size_t maxVertices = limitOf<size_t>("maxLetterCorners");
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

using Group = std::span<const GlyphPlacement>;

/// Longer than any word.
constexpr double longestGroup = 60 * ShapedText::em;

/// How far the layers reach, before something is added to them.
class Layers {
  public:
    explicit Layers(const SolidLetters& letters) {
        for (size_t i = 0; i < all.size(); ++i) first_[i] = (letters.*all[i]).corners.size();
    }
    /// What has been added belongs to a part.
    void addPieces(size_t part, SolidLetters& letters) const {
        for (size_t i = 0; i < all.size(); ++i) {
            LetterLayer& layer = letters.*all[i];
            if (layer.corners.size() > first_[i])
                layer.pieces.push_back({part, first_[i], layer.corners.size() - first_[i]});
        }
    }

  private:
    static constexpr std::array all{&SolidLetters::letters, &SolidLetters::fronts, &SolidLetters::sides,
                                    &SolidLetters::colored};
    std::array<size_t, all.size()> first_{};
};

class SolidGlyphMaker {
  public:
    SolidGlyphMaker(const ShapedText& text, const LetterParts& parts, const SolidLook& look)
        : text_(text),
          parts_(parts),
          half_(double(look.depth) / 2),
          bevelDepth_(std::min(double(look.bevelDepth), half_)),
          isBevelled_(look.bevelWidth > 0 && bevelDepth_ > 0),
          profile_(profileOf(look.bevelSteps)),
          bevelWidth_(isBevelled_ ? double(look.bevelWidth) : 0),
          frontsApart_(look.frontsApart),
          sidesApart_(look.sidesApart),
          groups_(letterGroups(text, parts.ofPlacement, longestGroup)) {
        for (const Group& group : groups_) {
            const auto [shape, isNew] = shapes_.try_emplace(formOf(group));
            if (isNew) shape->second = shapeOf(group);
        }
    }

    SolidLetters letters() {
        SolidLetters letters;
        letters.parts = parts_.parts;
        for (size_t part = 0; part < parts_.parts.size(); ++part) addPart(part, letters);
        letters.atlas = atlas_.takeBitmap();
        return letters;
    }

  private:
    Shape shapeOf(const Group& group) {
        Shape shape;
        std::vector<OutlineContour> contours;
        if (text_.isColored(group[0].glyph))
            contours = loadPicture(text_.picture(group, ShapedText::em), shape);
        else
            contours = united(outlinesOf(group));
        shape.rims = bevelledRims(contours, bevelWidth_);
        shape.face = tessellate(frontOf(shape.rims));
        return shape;
    }

    std::vector<OutlineContour> outlinesOf(const Group& group) const {
        std::vector<OutlineContour> contours;
        for (const GlyphPlacement& letter : group)
            for (OutlineContour& contour : text_.outline(letter.glyph)) {
                for (OutlinePoint& point : contour)
                    point = {point[0] + letter.x - group[0].x, point[1] + letter.y - group[0].y};
                contours.push_back(std::move(contour));
            }
        return contours;
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
        const Layers ends(letters);
        std::vector<LetterVertex> faces;
        for (const Group& group : groups_) {
            if (partOf(group) != part) continue;
            const Shape& shape = shapes_.at(formOf(group));
            if (shape.rims.empty() && !shape.isLeftOut) continue;  // blank
            count_ += shape.vertices(isBevelled_ ? profile_.size() : 0);
            if (shape.isLeftOut || count_ > maxVertices) {
                for (const GlyphPlacement& letter : group) letters.leftOut.push_back(text_.letterAt(letter));
                continue;
            }
            for (const Rim& rim : shape.rims) addRim(rim, group[0], letters);
            addFaces(shape, group[0],
                     shape.picture  ? letters.colored.corners
                     : frontsApart_ ? letters.fronts.corners
                                    : faces);
        }
        letters.letters.corners.insert(letters.letters.corners.end(), faces.begin(), faces.end());
        ends.addPieces(part, letters);
    }

    size_t partOf(const Group& group) const {
        return parts_.ofPlacement[size_t(&group[0] - text_.placements().data())];
    }

    void addRim(const Rim& rim, const GlyphPlacement& place, SolidLetters& letters) const {
        const double below = isBevelled_ ? bevelDepth_ : 0;
        const RimLine side{0, 1, 1, 0};
        addBand(rim, place, {side, below - half_, sideColor}, {side, half_ - below, sideColor},
                sidesApart_ ? letters.sides.corners : letters.letters.corners, sidesApart_);
        if (!isBevelled_) return;
        for (size_t i = 0; i + 1 < profile_.size(); ++i) {
            const auto at = [&](size_t line, double front) {
                return BandEdge{profile_[line], front * (half_ - profile_[line].below * bevelDepth_),
                                bevelColor, front};
            };
            addBand(rim, place, at(i, 1), at(i + 1, 1), letters.letters.corners);
            addBand(rim, place, at(i + 1, -1), at(i, -1), letters.letters.corners);
        }
    }

    struct BandEdge {
        RimLine line;
        double z;
        float color;
        double front = 1;  ///< 1 or -1: to which side the cut looks
    };

    /// Between two lines along a rim, the first one behind the other. `unrolled`: with coordinates along it.
    void addBand(const Rim& rim, const GlyphPlacement& place, const BandEdge& back, const BandEdge& front,
                 std::vector<LetterVertex>& corners, bool unrolled = false) const {
        const std::vector<double> shares = unrolled ? sharesAlong(rim) : std::vector<double>();
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
                    unrolled ? float(shares[i + end]) : edge.color,
                    !unrolled         ? 0.5f
                    : &edge == &front ? 0.0f
                                      : 1.0f};
            };
            const LetterVertex from = corner(0, back), to = corner(1, back), above = corner(1, front);
            corners.insert(corners.end(), {from, to, above, from, above, corner(0, front)});
        }
    }

    /// Of each corner and, once more, of the first: 0 to 1.
    static std::vector<double> sharesAlong(const Rim& rim) {
        std::vector<double> lengths{0};
        for (size_t i = 0; i < rim.corners.size(); ++i) {
            const OutlinePoint &from = rim.corners[i], &to = rim.corners[(i + 1) % rim.corners.size()];
            lengths.push_back(lengths.back() + std::hypot(to[0] - from[0], to[1] - from[1]));
        }
        for (double& length : lengths) length /= std::max(lengths.back(), 1e-9);
        return lengths;
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
            if (frontsApart_) {
                vertex.u = float((place.x + at[0]) / std::max(text_.size().width, 1e-9) + 0.5);
                vertex.v = float(0.5 - (place.y + at[1]) / std::max(text_.size().height, 1e-9));
            }
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
    double bevelWidth_;
    bool frontsApart_, sidesApart_;
    std::vector<Group> groups_;
    GlyphAtlas atlas_;
    std::map<LetterForm, Shape> shapes_;
    size_t count_ = 0;
};

}  // namespace

SolidLetters solidGlyphs(const ShapedText& text, const std::optional<LetterUnit>& part,
                         const SolidLook& look) {
    return SolidGlyphMaker(text, letterParts(text, part), look).letters();
}

}  // namespace platform
