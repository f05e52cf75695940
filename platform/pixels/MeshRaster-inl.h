// Private to platform/pixels: which samples of a tile see a triangle.
// Included once for each instruction set.
#if defined(MULTISCENE_MESHRASTER) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_MESHRASTER
#undef MULTISCENE_MESHRASTER
#else
#define MULTISCENE_MESHRASTER
#endif

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "platform/pixels/MeshSamples.h"
#include "platform/pixels/PixelVectors-inl.h"
#include "platform/pixels/RowBounds.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

// A number that changes evenly over the tile, at the samples of its first pixel.
struct SampledPlane {
    float across, down;
    float at[kSamples];

    SampledPlane() = default;
    SampledPlane(double acrossPixel, double downPixel, double first)
        : across(static_cast<float>(acrossPixel)), down(static_cast<float>(downPixel)) {
        for (int s = 0; s < kSamples; ++s)
            at[s] = static_cast<float>(first) + (across * kSampleX[s] + down * kSampleY[s]);
    }
    HWY_INLINE float start(int row, int sample) const { return at[sample] + down * static_cast<float>(row); }
};

// A triangle in a tile. It has the samples at which all three edges are more than `least`: of two triangles
// that share an edge exactly one has those that lie on it, because each number of the one is the negative of
// the other's.
struct TileTriangle {
    SampledPlane edges[3];
    float least[3];
    SampledPlane depth;
    float nearest, farthest;
    uint32_t number;
    PixelBox box;  // in the tile

    TileTriangle(const SeenTriangle& seen, const TileArea& area, uint32_t triangleNumber)
        : number(triangleNumber),
          box{std::max(seen.box.left, area.left) - area.left, std::max(seen.box.top, area.top) - area.top,
              std::min(seen.box.right, area.right) - area.left,
              std::min(seen.box.bottom, area.bottom) - area.top} {
        if (box.isEmpty()) return;
        const double area2 = twiceArea(seen), turn = area2 > 0 ? 1 : -1;
        const double middleX = area.left + 0.5, middleY = area.top + 0.5;
        for (size_t i = 0; i < 3; ++i) {
            const size_t next = (i + 1) % 3;
            const double x0 = seen.x[i], y0 = seen.y[i], x1 = seen.x[next], y1 = seen.y[next];
            const double across = turn * (y0 - y1), down = turn * (x1 - x0);
            const double rest = turn * (x0 * y1 - x1 * y0);
            edges[i] = {across, down, across * middleX + down * middleY + rest};
            least[i] = across > 0 || (across == 0 && down > 0) ? -FLT_MIN : 0;
        }
        findDepth(seen, area2, middleX, middleY);
    }

  private:
    void findDepth(const SeenTriangle& seen, double area2, double middleX, double middleY) {
        constexpr double kSteps = 65535;
        const double x1 = double{seen.x[1]} - seen.x[0], y1 = double{seen.y[1]} - seen.y[0];
        const double x2 = double{seen.x[2]} - seen.x[0], y2 = double{seen.y[2]} - seen.y[0];
        const double z1 = double{seen.depth[1]} - seen.depth[0], z2 = double{seen.depth[2]} - seen.depth[0];
        const double across = (z1 * y2 - z2 * y1) / area2, down = (z2 * x1 - z1 * x2) / area2;
        const double first = seen.depth[0] + across * (middleX - seen.x[0]) + down * (middleY - seen.y[0]);
        depth = {kSteps * across, kSteps * down, kSteps * first + 0.5};
        const auto step = [](float part) { return std::clamp(part, 0.0f, 1.0f) * 65535.0f + 0.5f; };
        nearest = step(std::min({seen.depth[0], seen.depth[1], seen.depth[2]}));
        farthest = step(std::max({seen.depth[0], seen.depth[1], seen.depth[2]}));
    }
};

// A triangle's numbers at the samples of a row's first pixel.
struct RowStart {
    float edges[3][kSamples], depth[kSamples];

    RowStart(const TileTriangle& triangle, int row) {
        for (int s = 0; s < kSamples; ++s) {
            for (int e = 0; e < 3; ++e) edges[e][s] = triangle.edges[e].start(row, s);
            depth[s] = triangle.depth.start(row, s);
        }
    }
};

// What samples of a row would see with one more triangle.
template <bool kComparesDepth>
class RowKeys {
  public:
    RowKeys(const TileTriangle& triangle, int row, Run within)
        : triangle_(triangle), start_(triangle, row), within_(within) {}

    // At columns from `column` on.
    HWY_INLINE void lookAt(int column) {
        const RealVector x = columns(column);
        for (int e = 0; e < 3; ++e) across_[e] = hn::Mul(real(triangle_.edges[e].across), x);
        depthAcross_ = hn::Mul(real(triangle_.depth.across), x);
        isWithin_ = hn::And(hn::Ge(x, real(static_cast<float>(within_.from))),
                            hn::Lt(x, real(static_cast<float>(within_.to))));
    }

    // `kInside`: all samples lie in the triangle.
    template <bool kInside>
    HWY_INLINE PixelVector seen(int sample, PixelVector before) const {
        auto covered = isWithin_;
        for (int e = 0; e < 3 && !kInside; ++e)
            covered = hn::And(covered, hn::Gt(hn::Add(real(start_.edges[e][sample]), across_[e]),
                                              real(triangle_.least[e])));
        const auto mask = hn::RebindMask(Pixels(), covered);
        const PixelVector number = hn::Set(Pixels(), triangle_.number);
        if (!kComparesDepth) {
            const PixelVector depth = hn::And(before, hn::Set(Pixels(), MeshSamples::kFarthest));
            return kInside ? hn::Or(depth, number) : hn::IfThenElse(mask, hn::Or(depth, number), before);
        }
        const RealVector depth =
            bounded(hn::Add(real(start_.depth[sample]), depthAcross_), triangle_.nearest, triangle_.farthest);
        const PixelVector steps = hn::BitCast(Pixels(), hn::ConvertTo(Places(), depth));
        const PixelVector key = hn::Or(hn::ShiftLeft<16>(steps), number);
        return hn::Min(before, kInside ? key : hn::IfThenElse(mask, key, hn::Set(Pixels(), 0xFFFFFFFF)));
    }

  private:
    const TileTriangle& triangle_;
    const RowStart start_;
    const Run within_;
    RealVector across_[3], depthAcross_;
    hn::Mask<Reals> isWithin_;
};

// The pixels of a row of which a triangle may have samples, and those of which it has all.
HWY_INLINE RowBounds boundsOfRow(const TileTriangle& triangle, int row) {
    constexpr int kSmall = 32, kSlack = 1;  // pixels
    RowBounds bounds{{triangle.box.left, triangle.box.right}, {triangle.box.left, triangle.box.right}};
    if (bounds.touched.to - bounds.touched.from <= kSmall) {
        bounds.inside.to = bounds.inside.from;
        return bounds;
    }
    for (const SampledPlane& edge : triangle.edges) {
        const auto [least, most] = std::minmax_element(edge.at, edge.at + kSamples);
        const float down = edge.down * static_cast<float>(row);
        if (edge.across == 0) {
            if (!(*least + down > 0)) bounds.inside.to = bounds.inside.from;
            continue;
        }
        const auto column = [&](float start) {
            return std::clamp(-(start + down) / edge.across, -1e6f, 1e6f);
        };
        const auto [outer, inner] = std::pair(column(*most), column(*least));
        const auto before = [](float place) { return static_cast<int>(std::floor(place)) - kSlack; };
        const auto behind = [](float place) { return static_cast<int>(std::ceil(place)) + kSlack; };
        if (edge.across > 0) {
            bounds.touched.from = std::max(bounds.touched.from, before(outer));
            bounds.inside.from = std::max(bounds.inside.from, behind(inner));
        } else {
            bounds.touched.to = std::min(bounds.touched.to, behind(outer) + 1);
            bounds.inside.to = std::min(bounds.inside.to, before(inner));
        }
    }
    return bounds;
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
