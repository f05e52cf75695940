// Letters as solids. For the files of this folder.
#pragma once

#include <array>
#include <map>

#include "platform/font/LetterFont.h"
#include "platform/font/Letters.h"

namespace platform {

using OutlinePoint = std::array<double, 2>;
/// A closed line; the letter lies to its left.
using OutlineContour = std::vector<OutlinePoint>;

/// Keeps the shapes of the letters that are loaded, and extrudes each that is placed.
class GlyphMesh : public GlyphSink {
  public:
    /// `depth` in the font's units.
    explicit GlyphMesh(double depth) : depth_(depth) {}

    void load(unsigned int glyph, FT_GlyphSlotRec_* outline) override;
    void place(unsigned int glyph, double x, double y) override;

    /// All sides, then all faces, in the font's units.
    std::vector<LetterVertex> takeTriangles();

  private:
    struct Shape {
        std::vector<OutlineContour> contours;
        std::vector<OutlinePoint> face;  ///< triangles, counter-clockwise
    };
    void addSides(const OutlineContour& contour, double x, double y);
    void addFaces(const std::vector<OutlinePoint>& face, double x, double y);

    double depth_;
    std::map<unsigned int, Shape> shapes_;
    std::vector<LetterVertex> sides_, faces_;
};

}  // namespace platform
