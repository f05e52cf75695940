#include "platform/font/Bevel.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

double dot(const OutlinePoint& a, const OutlinePoint& b) { return a[0] * b[0] + a[1] * b[1]; }
double cross(const OutlinePoint& a, const OutlinePoint& b) { return a[0] * b[1] - a[1] * b[0]; }
OutlinePoint operator-(const OutlinePoint& a, const OutlinePoint& b) { return {a[0] - b[0], a[1] - b[1]}; }
OutlinePoint operator+(const OutlinePoint& a, const OutlinePoint& b) { return {a[0] + b[0], a[1] + b[1]}; }
OutlinePoint operator*(double factor, const OutlinePoint& a) { return {factor * a[0], factor * a[1]}; }

OutlinePoint unit(const OutlinePoint& a) {
    const double length = std::hypot(a[0], a[1]);
    return length > 0 ? (1 / length) * a : OutlinePoint{1, 0};
}

/// Two points that lie on each other have no line between them.
OutlineContour withoutRepetitions(const OutlineContour& contour) {
    constexpr double least = 1e-6;
    OutlineContour kept;
    for (const OutlinePoint& point : contour)
        if (kept.empty() || std::hypot(point[0] - kept.back()[0], point[1] - kept.back()[1]) > least)
            kept.push_back(point);
    while (kept.size() > 1 &&
           std::hypot(kept.front()[0] - kept.back()[0], kept.front()[1] - kept.back()[1]) <= least)
        kept.pop_back();
    return kept;
}

/// A rim whose cut may still have to become narrower.
class NarrowingRim {
  public:
    NarrowingRim(const OutlineContour& contour, double width) {
        rim_.corners = withoutRepetitions(contour);
        rim_.width.assign(size(), width);
        for (size_t i = 0; i < size(); ++i) {
            const OutlinePoint along = unit(rim_.corners[next(i)] - rim_.corners[i]);
            outwards_.push_back({along[1], -along[0]});
        }
        for (size_t i = 0; i < size(); ++i) {
            // So far that both lines that meet here move by 1, but for sharp corners.
            constexpr double sharpest = 0.25;
            const OutlinePoint &before = outwards_[previous(i)], &after = outwards_[i];
            inwards_.push_back(-1 / std::max(sharpest, 1 + dot(before, after)) * (before + after));
        }
    }

    size_t size() const { return rim_.corners.size(); }
    size_t next(size_t i) const { return i + 1 == size() ? 0 : i + 1; }
    size_t previous(size_t i) const { return i == 0 ? size() - 1 : i - 1; }

    const OutlineContour& corners() const { return rim_.corners; }
    /// To the letter's middle at most, which lies half as far as the next line on the way inwards.
    void keepFromMiddle(const std::vector<NarrowingRim>& rims) {
        constexpr double share = 0.45;
        for (size_t i = 0; i < size(); ++i)
            for (const NarrowingRim& other : rims)
                for (size_t k = 0; k < other.size(); ++k)
                    if (const double way = wayTo(i, other.corners()[k], other.corners()[other.next(k)]);
                        way > 0)
                        rim_.width[i] = std::min(rim_.width[i], share * way);
    }

    OutlinePoint end(size_t i) const { return rim_.corners[i] + rim_.width[i] * inwards_[i]; }
    bool turnsRound(size_t i) const {
        return rim_.width[i] + rim_.width[next(i)] > 0 &&
               dot(end(next(i)) - end(i), rim_.corners[next(i)] - rim_.corners[i]) <= 0;
    }
    /// At both ends of a line.
    void narrow(size_t i, double factor) {
        rim_.width[i] *= factor;
        rim_.width[next(i)] *= factor;
    }
    /// So that no cut changes its width suddenly.
    void level() {
        constexpr double steepest = 0.5;
        const auto limit = [&](size_t at, size_t by, const OutlinePoint& line) {
            rim_.width[at] =
                std::min(rim_.width[at], rim_.width[by] + steepest * std::hypot(line[0], line[1]));
        };
        for (int round = 0; round < 2; ++round) {
            for (size_t i = 0; i < size(); ++i) limit(next(i), i, rim_.corners[next(i)] - rim_.corners[i]);
            for (size_t i = size(); i-- > 0;) limit(i, next(i), rim_.corners[next(i)] - rim_.corners[i]);
        }
    }

    Rim finished() {
        constexpr double curve = 0.8;  // the cosine below which two lines meet at an edge
        for (size_t i = 0; i < size(); ++i) {
            rim_.inwards.push_back(rim_.width[i] * inwards_[i]);
            const auto at = [&](size_t neighbour) {
                const bool isCurve = dot(outwards_[i], outwards_[neighbour]) > curve;
                return isCurve ? unit(outwards_[i] + outwards_[neighbour]) : outwards_[i];
            };
            rim_.normals.push_back({at(previous(i)), at(next(i))});
        }
        return std::move(rim_);
    }

  private:
    /// How far inwards a corner meets a line, in widths of a cut; 0 where it does not, or lies on it.
    double wayTo(size_t i, const OutlinePoint& from, const OutlinePoint& to) const {
        constexpr double least = 1e-6;
        const OutlinePoint line = to - from, start = from - rim_.corners[i];
        const double across = cross(inwards_[i], line);
        if (std::abs(across) < least * least) return 0;
        const double along = cross(start, inwards_[i]) / across, way = cross(start, line) / across;
        return along >= -least && along <= 1 + least && way > least ? way : 0;
    }

    Rim rim_;
    std::vector<OutlinePoint> outwards_;  ///< of the line that follows each corner
    std::vector<OutlinePoint> inwards_;   ///< of a cut of width 1
};

/// A line that ends a cut.
struct EndLine {
    size_t rim, corner;
    OutlinePoint from, to;
    double left, right;
};

bool crosses(const EndLine& a, const EndLine& b) {
    const auto sides = [](const EndLine& line, const OutlinePoint& p, const OutlinePoint& q) {
        return cross(line.to - line.from, p - line.from) * cross(line.to - line.from, q - line.from);
    };
    return sides(a, b.from, b.to) < 0 && sides(b, a.from, a.to) < 0;
}

class Narrowing {
  public:
    Narrowing(const std::vector<OutlineContour>& contours, double width) {
        for (const OutlineContour& contour : contours)
            if (NarrowingRim rim(contour, width); rim.size() >= 3) rims_.push_back(std::move(rim));
        if (width <= 0) return;
        const std::vector<NarrowingRim> all = rims_;
        for (NarrowingRim& rim : rims_) rim.keepFromMiddle(all);
    }

    std::vector<Rim> rims() {
        for (NarrowingRim& rim : rims_) rim.level();
        constexpr int rounds = 14, lastResort = 10;
        for (int round = 0; round < rounds; ++round)
            if (!narrow(round < lastResort ? 0.7 : 0)) break;
        std::vector<Rim> rims;
        for (NarrowingRim& rim : rims_) rims.push_back(rim.finished());
        return rims;
    }

  private:
    /// Whether anything had to be.
    bool narrow(double factor) {
        std::vector<std::pair<size_t, size_t>> faults;
        for (size_t rim = 0; rim < rims_.size(); ++rim)
            for (size_t i = 0; i < rims_[rim].size(); ++i)
                if (rims_[rim].turnsRound(i)) faults.emplace_back(rim, i);
        findCrossings(faults);
        std::ranges::sort(faults);
        faults.erase(std::unique(faults.begin(), faults.end()), faults.end());
        for (const auto& [rim, i] : faults) rims_[rim].narrow(i, factor);
        for (NarrowingRim& rim : rims_) rim.level();
        return !faults.empty();
    }

    /// Among lines in the order of their left ends.
    void findCrossings(std::vector<std::pair<size_t, size_t>>& faults) const {
        std::vector<EndLine> lines;
        for (size_t rim = 0; rim < rims_.size(); ++rim)
            for (size_t i = 0; i < rims_[rim].size(); ++i) {
                const OutlinePoint from = rims_[rim].end(i), to = rims_[rim].end(rims_[rim].next(i));
                lines.push_back({rim, i, from, to, std::min(from[0], to[0]), std::max(from[0], to[0])});
            }
        std::ranges::sort(lines, {}, &EndLine::left);
        for (size_t a = 0; a < lines.size(); ++a)
            for (size_t b = a + 1; b < lines.size() && lines[b].left <= lines[a].right; ++b)
                if (crosses(lines[a], lines[b]))
                    for (const EndLine& line : {lines[a], lines[b]})
                        faults.emplace_back(line.rim, line.corner);
    }

    std::vector<NarrowingRim> rims_;
};

}  // namespace

std::vector<Rim> bevelledRims(const std::vector<OutlineContour>& contours, double width) {
    return Narrowing(contours, std::max(width, 0.0)).rims();
}

}  // namespace platform
