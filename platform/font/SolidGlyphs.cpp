#include "platform/font/SolidGlyphs.h"

#include <cmath>
#include <optional>

#include "platform/font/GlyphAtlas.h"
#include "platform/font/Silhouette.h"
#include "platform/font/Tessellator.h"

namespace platform {

namespace {

/// More than any text that can be read.
constexpr size_t maxVertices = 1'500'000;
constexpr float faceTexel = 0.25f, sideTexel = 0.75f;

/// Around the shape's origin.
struct Shape {
    std::vector<OutlineContour> contours;
    std::vector<OutlinePoint> face;  ///< triangles, counter-clockwise
    /// The atlas's pixel at the shape's origin, of one with colours of its own.
    std::optional<OutlinePoint> picture;
    bool isLeftOut = false;
};

class SolidGlyphMaker {
  public:
    SolidGlyphMaker(const ShapedText& text, double depth) : text_(text), half_(float(depth / 2)) {
        for (size_t glyph = 0; glyph < text.glyphCount(); ++glyph) {
            Shape& shape = shapes_.emplace_back();
            if (text.isColored(glyph))
                loadPicture(text.picture({{GlyphPlacement{.glyph = glyph}}}, ShapedText::em), shape);
            else
                shape.contours = text.outline(glyph);
            shape.face = tessellate(shape.contours);
        }
    }

    SolidLetters letters() {
        SolidLetters letters;
        for (const GlyphPlacement& placement : text_.placements()) {
            const Shape& shape = shapes_[placement.glyph];
            const size_t vertices =
                letters.triangles.size() + faces_.size() + letters.coloredTriangles.size();
            if (shape.isLeftOut || vertices > maxVertices) {
                letters.leftOut.push_back(text_.letterAt(placement));
                continue;
            }
            for (const OutlineContour& contour : shape.contours)
                addSides(contour, placement, letters.triangles);
            addFaces(shape, placement, shape.picture ? letters.coloredTriangles : faces_);
        }
        letters.triangles.insert(letters.triangles.end(), faces_.begin(), faces_.end());
        letters.atlas = atlas_.takeBitmap();
        return letters;
    }

  private:
    /// A picture is cut out along its silhouette. One for which the atlas has no room is left out.
    void loadPicture(const GlyphPicture& picture, Shape& shape) {
        if (picture.bitmap.isEmpty()) return;
        const auto place = atlas_.add(opaquePicture(picture.bitmap));
        shape.isLeftOut = !place;
        if (!place) return;
        shape.contours = traceSilhouette(picture.bitmap);
        for (OutlineContour& contour : shape.contours)
            for (OutlinePoint& point : contour) point = {point[0] + picture.left, point[1] + picture.top};
        shape.picture = {place->x - picture.left, place->y + picture.top};
    }

    void addSides(const OutlineContour& contour, const GlyphPlacement& place,
                  std::vector<LetterVertex>& triangles) const {
        for (size_t i = 0; i < contour.size(); ++i) {
            const OutlinePoint &from = contour[i], &to = contour[(i + 1) % contour.size()];
            const double along = to[0] - from[0], up = to[1] - from[1], length = std::hypot(along, up);
            if (length == 0) continue;
            const auto corner = [&](const OutlinePoint& at, float z) {
                return LetterVertex{float(place.x + at[0]),
                                    float(place.y + at[1]),
                                    z,
                                    float(up / length),
                                    float(-along / length),
                                    0,
                                    sideTexel,
                                    0.5f};
            };
            triangles.insert(triangles.end(),
                             {corner(from, -half_), corner(to, -half_), corner(to, half_),  //
                              corner(from, -half_), corner(to, half_), corner(from, half_)});
        }
    }

    void addFaces(const Shape& shape, const GlyphPlacement& place,
                  std::vector<LetterVertex>& triangles) const {
        const auto corner = [&](const OutlinePoint& at, float side) {
            LetterVertex vertex{
                float(place.x + at[0]), float(place.y + at[1]), side * half_, 0, 0, side, faceTexel, 0.5f};
            if (shape.picture) {
                vertex.u = float(((*shape.picture)[0] + at[0]) / GlyphAtlas::width);
                vertex.v = float(((*shape.picture)[1] - at[1]) / atlas_.bitmap().height);
            }
            return vertex;
        };
        const std::vector<OutlinePoint>& face = shape.face;
        for (size_t i = 0; i + 2 < face.size(); i += 3) {
            for (const size_t k : {i, i + 1, i + 2}) triangles.push_back(corner(face[k], 1));
            for (const size_t k : {i + 2, i + 1, i}) triangles.push_back(corner(face[k], -1));
        }
    }

    const ShapedText& text_;
    float half_;
    GlyphAtlas atlas_;
    std::vector<Shape> shapes_;
    std::vector<LetterVertex> faces_;
};

}  // namespace

SolidLetters solidGlyphs(const ShapedText& text, double depth) {
    return SolidGlyphMaker(text, depth).letters();
}

}  // namespace platform
