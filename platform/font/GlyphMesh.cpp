#include "platform/font/GlyphMesh.h"

#include <GL/glu.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>

namespace platform {

namespace {

constexpr int curveSteps = 8;  // straight pieces that a curve becomes
/// More than any text that can be read; further letters are left out.
constexpr size_t maxVertices = 1'500'000;
constexpr float faceTexel = 0.25f, sideTexel = 0.75f;

/// Follows an outline and writes it down as straight lines.
class Flattener {
  public:
    std::vector<OutlineContour> contours(FT_Outline& outline) {
        const FT_Outline_Funcs functions{moveTo, lineTo, conicTo, cubicTo, 0, 0};
        FT_Outline_Decompose(&outline, &functions, this);
        const bool isOnRight = FT_Outline_Get_Orientation(&outline) == FT_ORIENTATION_TRUETYPE;
        for (OutlineContour& contour : contours_) {
            if (contour.size() > 1 && contour.front() == contour.back()) contour.pop_back();
            if (isOnRight) std::reverse(contour.begin(), contour.end());
        }
        std::erase_if(contours_, [](const OutlineContour& contour) { return contour.size() < 3; });
        return std::move(contours_);
    }

  private:
    static OutlinePoint point(const FT_Vector* at) { return {double(at->x) / 64, double(at->y) / 64}; }
    static OutlinePoint between(const OutlinePoint& from, const OutlinePoint& to, double share) {
        return {std::lerp(from[0], to[0], share), std::lerp(from[1], to[1], share)};
    }
    static OutlineContour& contour(void* flattener) {
        return static_cast<Flattener*>(flattener)->contours_.back();
    }
    static int moveTo(const FT_Vector* to, void* flattener) {
        static_cast<Flattener*>(flattener)->contours_.push_back({point(to)});
        return 0;
    }
    static int lineTo(const FT_Vector* to, void* flattener) {
        contour(flattener).push_back(point(to));
        return 0;
    }
    static int conicTo(const FT_Vector* by, const FT_Vector* to, void* flattener) {
        const OutlinePoint a = contour(flattener).back(), b = point(by), c = point(to);
        for (int step = 1; step <= curveSteps; ++step) {
            const double share = double(step) / curveSteps;
            contour(flattener).push_back(between(between(a, b, share), between(b, c, share), share));
        }
        return 0;
    }
    static int cubicTo(const FT_Vector* by, const FT_Vector* then, const FT_Vector* to, void* flattener) {
        const OutlinePoint a = contour(flattener).back(), b = point(by), c = point(then), d = point(to);
        for (int step = 1; step <= curveSteps; ++step) {
            const double share = double(step) / curveSteps;
            const OutlinePoint middle = between(b, c, share);
            contour(flattener).push_back(between(between(between(a, b, share), middle, share),
                                                 between(middle, between(c, d, share), share), share));
        }
        return 0;
    }

    std::vector<OutlineContour> contours_;
};

/// Fills contours with triangles.
class Tessellator {
  public:
    std::vector<OutlinePoint> triangles(const std::vector<OutlineContour>& contours) {
        const std::unique_ptr<GLUtesselator, void (*)(GLUtesselator*)> tess(gluNewTess(), gluDeleteTess);
        gluTessProperty(tess.get(), GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
        gluTessNormal(tess.get(), 0, 0, 1);
        setCallback(tess.get(), GLU_TESS_BEGIN_DATA, begin);
        setCallback(tess.get(), GLU_TESS_VERTEX_DATA, vertex);
        setCallback(tess.get(), GLU_TESS_COMBINE_DATA, combine);
        gluTessBeginPolygon(tess.get(), this);
        for (const OutlineContour& contour : contours) {
            gluTessBeginContour(tess.get());
            for (const OutlinePoint& point : contour) {
                auto& kept = points_.emplace_back(std::array{point[0], point[1], 0.0});
                gluTessVertex(tess.get(), kept.data(), kept.data());
            }
            gluTessEndContour(tess.get());
        }
        gluTessEndPolygon(tess.get());
        return std::move(triangles_);
    }

  private:
    template <typename Function>
    static void setCallback(GLUtesselator* tess, GLenum which, Function function) {
        gluTessCallback(tess, which, reinterpret_cast<_GLUfuncptr>(function));
    }
    static void begin(GLenum kind, void* tessellator) {
        auto& self = *static_cast<Tessellator*>(tessellator);
        self.kind_ = kind;
        self.shape_.clear();
    }
    /// Fans and strips are taken apart.
    static void vertex(void* point, void* tessellator) {
        auto& self = *static_cast<Tessellator*>(tessellator);
        const auto* at = static_cast<const double*>(point);
        self.shape_.push_back({at[0], at[1]});
        const size_t count = self.shape_.size();
        if (count < 3 || (self.kind_ == GL_TRIANGLES && count % 3 != 0)) return;
        const bool isFan = self.kind_ == GL_TRIANGLE_FAN;
        const bool isTurned = self.kind_ == GL_TRIANGLE_STRIP && count % 2 == 0;
        const size_t first = isFan ? 0 : isTurned ? count - 2 : count - 3;
        const size_t second = isTurned ? count - 3 : count - 2;
        for (const size_t corner : {first, second, count - 1}) self.triangles_.push_back(self.shape_[corner]);
    }
    static void combine(const double at[3], void* [4], float[4], void** out, void* tessellator) {
        auto& points = static_cast<Tessellator*>(tessellator)->points_;
        *out = points.emplace_back(std::array{at[0], at[1], 0.0}).data();
    }

    std::deque<std::array<double, 3>> points_;  // GLU keeps pointers to them
    GLenum kind_ = GL_TRIANGLES;
    std::vector<OutlinePoint> shape_, triangles_;
};

}  // namespace

void GlyphMesh::load(unsigned int glyph, FT_GlyphSlotRec_* outline) {
    if (outline->format != FT_GLYPH_FORMAT_OUTLINE) return;
    Shape shape{Flattener().contours(outline->outline), {}};
    shape.face = Tessellator().triangles(shape.contours);
    shapes_.emplace(glyph, std::move(shape));
}

void GlyphMesh::place(unsigned int glyph, double x, double y) {
    const auto found = shapes_.find(glyph);
    if (found == shapes_.end() || sides_.size() + faces_.size() > maxVertices) return;
    for (const OutlineContour& contour : found->second.contours) addSides(contour, x, y);
    addFaces(found->second.face, x, y);
}

void GlyphMesh::addSides(const OutlineContour& contour, double x, double y) {
    const auto half = float(depth_ / 2);
    for (size_t i = 0; i < contour.size(); ++i) {
        const OutlinePoint &from = contour[i], &to = contour[(i + 1) % contour.size()];
        const double along = to[0] - from[0], up = to[1] - from[1], length = std::hypot(along, up);
        if (length == 0) continue;
        const auto corner = [&](const OutlinePoint& at, float z) {
            return LetterVertex{float(x + at[0]),
                                float(y + at[1]),
                                z,
                                float(up / length),
                                float(-along / length),
                                0,
                                sideTexel,
                                0.5f};
        };
        sides_.insert(sides_.end(), {corner(from, -half), corner(to, -half), corner(to, half),  //
                                     corner(from, -half), corner(to, half), corner(from, half)});
    }
}

void GlyphMesh::addFaces(const std::vector<OutlinePoint>& face, double x, double y) {
    const auto half = float(depth_ / 2);
    const auto corner = [&](const OutlinePoint& at, float side) {
        return LetterVertex{float(x + at[0]), float(y + at[1]), side * half, 0, 0, side, faceTexel, 0.5f};
    };
    for (size_t i = 0; i + 2 < face.size(); i += 3) {
        for (const size_t k : {i, i + 1, i + 2}) faces_.push_back(corner(face[k], 1));
        for (const size_t k : {i + 2, i + 1, i}) faces_.push_back(corner(face[k], -1));
    }
}

std::vector<LetterVertex> GlyphMesh::takeTriangles() {
    sides_.insert(sides_.end(), faces_.begin(), faces_.end());
    return std::move(sides_);
}

}  // namespace platform
