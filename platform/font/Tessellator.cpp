#include "platform/font/Tessellator.h"

#include <GL/glu.h>

#include <array>
#include <deque>
#include <memory>

namespace platform {

namespace {

class Tessellator {
  public:
    std::vector<OutlinePoint> triangles(const std::vector<OutlineContour>& contours) {
        run(contours, GL_FALSE);
        return std::move(triangles_);
    }

    std::vector<OutlineContour> lines(const std::vector<OutlineContour>& contours) {
        run(contours, GL_TRUE);
        finishLine();
        return std::move(lines_);
    }

  private:
    void run(const std::vector<OutlineContour>& contours, GLboolean boundaryOnly) {
        const std::unique_ptr<GLUtesselator, void (*)(GLUtesselator*)> tess(gluNewTess(), gluDeleteTess);
        gluTessProperty(tess.get(), GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
        gluTessProperty(tess.get(), GLU_TESS_BOUNDARY_ONLY, boundaryOnly);
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
    }
    void finishLine() {
        if (kind_ == GL_LINE_LOOP && shape_.size() >= 3) lines_.push_back(std::move(shape_));
        shape_.clear();
    }

    template <typename Function>
    static void setCallback(GLUtesselator* tess, GLenum which, Function function) {
        gluTessCallback(tess, which, reinterpret_cast<_GLUfuncptr>(function));
    }
    static void begin(GLenum kind, void* tessellator) {
        auto& self = *static_cast<Tessellator*>(tessellator);
        self.finishLine();
        self.kind_ = kind;
    }
    /// Fans and strips are taken apart.
    static void vertex(void* point, void* tessellator) {
        auto& self = *static_cast<Tessellator*>(tessellator);
        const auto* at = static_cast<const double*>(point);
        self.shape_.push_back({at[0], at[1]});
        const size_t count = self.shape_.size();
        if (self.kind_ == GL_LINE_LOOP || count < 3 || (self.kind_ == GL_TRIANGLES && count % 3 != 0)) return;
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
    std::vector<OutlineContour> lines_;
};

}  // namespace

std::vector<OutlinePoint> tessellate(const std::vector<OutlineContour>& contours) {
    return Tessellator().triangles(contours);
}

std::vector<OutlineContour> united(const std::vector<OutlineContour>& contours) {
    return Tessellator().lines(contours);
}

}  // namespace platform
