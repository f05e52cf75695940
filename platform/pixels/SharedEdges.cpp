#include "platform/pixels/SharedEdges.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace platform {

namespace {

struct Point {
    double x, y;
};

constexpr double kSame = 1.0 / 16;  // pixels

// Numbers points, those at the same place alike.
class Points {
  public:
    static constexpr int kNone = -1;

    int number(const Point& point) {
        if (!(std::abs(point.x) < kFarthest && std::abs(point.y) < kFarthest)) return kNone;
        for (int64_t row = cell(point.y - kSame); row <= cell(point.y + kSame); ++row)
            for (int64_t column = cell(point.x - kSame); column <= cell(point.x + kSame); ++column) {
                const auto [first, beyond] = cells_.equal_range(key(column, row));
                for (auto each = first; each != beyond; ++each)
                    if (isSame(points_[static_cast<size_t>(each->second)], point)) return each->second;
            }
        const auto added = static_cast<int>(points_.size());
        points_.push_back(point);
        cells_.emplace(key(cell(point.x), cell(point.y)), added);
        return added;
    }

    const Point& operator[](int number) const { return points_[static_cast<size_t>(number)]; }

  private:
    static constexpr double kFarthest = 1e6;
    // Few points that differ fit in a cell, and most points lie so far inside that the next cell cannot
    // matter.
    static int64_t cell(double place) { return static_cast<int64_t>(std::floor(place * 4)); }
    static int64_t key(int64_t column, int64_t row) { return column * (int64_t{1} << 32) + row; }
    static bool isSame(const Point& a, const Point& b) {
        return std::abs(a.x - b.x) <= kSame && std::abs(a.y - b.y) <= kSame;
    }

    std::vector<Point> points_;
    std::unordered_multimap<int64_t, int> cells_;
};

// A line between two points, and what lies on its two sides of the shapes seen so far, from the front on.
struct Border {
    bool isTaken[2] = {}, isHidden[2] = {};
    bool endsSharply[2] = {};
};

// An edge of a shape.
struct EdgeUse {
    size_t paint, edge;
    size_t border;
    int side;
    int from, to;  // points
};

class Borders {
  public:
    explicit Borders(std::span<const QuadPaint> paints) {
        for (size_t i = 0; i < paints.size(); ++i) add(paints[i], i);
    }

    std::vector<EdgeUse> uses;
    std::vector<Border> borders;
    Points points;

  private:
    void add(const QuadPaint& paint, size_t index) {
        const auto count = static_cast<size_t>(paint.cornerCount);
        std::array<int, 4> numbers{};
        Point middle{0, 0};
        for (size_t i = 0; i < count; ++i) {
            const PaintCorner& corner = paint.corners[i];
            if (!(corner.w > 0)) return;  // cut in front of the camera
            const Point point{corner.x / corner.w, corner.y / corner.w};
            middle = {middle.x + point.x / static_cast<double>(count),
                      middle.y + point.y / static_cast<double>(count)};
            numbers[i] = points.number(point);
            if (numbers[i] == Points::kNone) return;
        }
        for (size_t i = 0; i < count; ++i) {
            const int from = numbers[i], to = numbers[(i + 1) % count];
            if (from == to) continue;
            const int low = std::min(from, to), high = std::max(from, to);
            const int64_t key = int64_t{low} * (int64_t{1} << 32) + high;
            const auto [known, isNew] = known_.try_emplace(key, borders.size());
            if (isNew) borders.emplace_back();
            uses.push_back({index, i, known->second, sideOf(points[low], points[high], middle), from, to});
        }
    }

    static int sideOf(const Point& a, const Point& b, const Point& seen) {
        return (b.x - a.x) * (seen.y - a.y) - (b.y - a.y) * (seen.x - a.x) > 0;
    }

    std::unordered_map<int64_t, size_t> known_;
};

// What lies on the other side in front of a shape says how its edge is painted.
void lookAcross(Borders& all, std::span<QuadPaint> paints) {
    for (auto use = all.uses.rbegin(); use != all.uses.rend(); ++use) {
        Border& border = all.borders[use->border];
        QuadPaint& paint = paints[use->paint];
        const int here = use->side, there = 1 - here;
        if (border.isHidden[there]) {
            paint.smooth[use->edge] = false;
            paint.reach[use->edge] = 1;
        } else if (border.isTaken[there]) {
            border.endsSharply[here] = border.endsSharply[there] = true;
        }
        border.isTaken[here] = true;
        border.isHidden[here] = border.isHidden[here] || hides(paint);
    }
}

// Both shapes get the very same line, so that each pixel falls to one of them.
void sharpen(const Borders& all, std::span<QuadPaint> paints) {
    for (const EdgeUse& use : all.uses) {
        QuadPaint& paint = paints[use.paint];
        if (!all.borders[use.border].endsSharply[use.side] || paint.reach[use.edge] > 0) continue;
        paint.smooth[use.edge] = false;
        const auto put = [&](size_t index, const Point& point) {
            PaintCorner& corner = paint.corners[index];
            corner.x = point.x * corner.w;
            corner.y = point.y * corner.w;
        };
        put(use.edge, all.points[use.from]);
        put((use.edge + 1) % static_cast<size_t>(paint.cornerCount), all.points[use.to]);
    }
}

}  // namespace

void shareEdges(std::span<QuadPaint> paints) {
    Borders all(paints);
    lookAcross(all, paints);
    sharpen(all, paints);
}

}  // namespace platform
