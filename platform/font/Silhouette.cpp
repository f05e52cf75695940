#include "platform/font/Silhouette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace platform {

namespace {

constexpr double threshold = 127.5;
/// In pixels: points closer than this to the line between their neighbours are dropped.
constexpr double straightness = 0.12;

/// Walks between the pixels' middles, the picture on the right. Each square of four pixels has up to two
/// lines between its sides.
class SilhouetteTracer {
  public:
    explicit SilhouetteTracer(const Bitmap& picture) : picture_(picture) {}

    std::vector<OutlineContour> contours() {
        for (int y = 0; y + 1 < picture_.height; ++y)
            for (int x = 0; x + 1 < picture_.width; ++x) addSquare(x, y);
        std::vector<OutlineContour> contours;
        while (!next_.empty()) {
            OutlineContour contour = takeLine();
            if (contour.size() >= 3) contours.push_back(std::move(contour));
        }
        return contours;
    }

  private:
    /// The side between a pixel and the one to its right, or below it.
    struct Side {
        int x, y;
        bool isDown;
        auto operator<=>(const Side&) const = default;
    };

    double alpha(int x, int y) const { return picture_.pixel(x, y)[3]; }
    bool isInside(int x, int y) const { return alpha(x, y) > threshold; }

    void addSquare(int x, int y) {
        const int kind =
            isInside(x, y) | isInside(x + 1, y) << 1 | isInside(x + 1, y + 1) << 2 | isInside(x, y + 1) << 3;
        const std::array<Side, 4> sides{Side{x, y, false}, {x + 1, y, true}, {x, y + 1, false}, {x, y, true}};
        enum { Top, Right, Bottom, Left, None };
        struct Lines {
            int from, to, secondFrom = None, secondTo = None;
        };
        static constexpr Lines table[16] = {{None, None},
                                            {Top, Left},
                                            {Right, Top},
                                            {Right, Left},
                                            {Bottom, Right},
                                            {Top, Left, Bottom, Right},
                                            {Bottom, Top},
                                            {Bottom, Left},
                                            {Left, Bottom},
                                            {Top, Bottom},
                                            {Right, Top, Left, Bottom},
                                            {Right, Bottom},
                                            {Left, Right},
                                            {Top, Right},
                                            {Left, Top},
                                            {None, None}};
        const Lines& lines = table[kind];
        if (lines.from != None) next_[sides[size_t(lines.from)]] = sides[size_t(lines.to)];
        if (lines.secondFrom != None) next_[sides[size_t(lines.secondFrom)]] = sides[size_t(lines.secondTo)];
    }

    OutlinePoint crossing(const Side& side) const {
        const double here = alpha(side.x, side.y), there = alpha(side.x + !side.isDown, side.y + side.isDown);
        const double share = (threshold - here) / (there - here);
        return {side.x + 0.5 + (side.isDown ? 0 : share), -(side.y + 0.5 + (side.isDown ? share : 0))};
    }

    OutlineContour takeLine() {
        OutlineContour contour;
        for (auto at = next_.begin(); at != next_.end();) {
            contour.push_back(crossing(at->first));
            const Side to = at->second;
            next_.erase(at);
            at = next_.find(to);
        }
        return contour;
    }

    const Bitmap& picture_;
    std::map<Side, Side> next_;
};

double distanceFromLine(const OutlinePoint& at, const OutlinePoint& from, const OutlinePoint& to) {
    const double x = to[0] - from[0], y = to[1] - from[1], length = std::hypot(x, y);
    const double dx = at[0] - from[0], dy = at[1] - from[1];
    return length > 0 ? std::abs(x * dy - y * dx) / length : std::hypot(dx, dy);
}

/// Drops what lies between two points that a straight line joins as well.
OutlineContour simplified(const OutlineContour& contour) {
    OutlineContour kept{contour.front()};
    for (size_t start = 0; start + 1 < contour.size();) {
        size_t end = start + 1;
        const auto isStraight = [&](size_t to) {
            for (size_t i = start + 1; i < to; ++i)
                if (distanceFromLine(contour[i], contour[start], contour[to]) > straightness) return false;
            return true;
        };
        while (end + 1 < contour.size() && isStraight(end + 1)) ++end;
        kept.push_back(contour[end]);
        start = end;
    }
    return kept;
}

/// The colours without alpha where there is enough of it; the rest stays clear.
Bitmap solidPart(const Bitmap& picture) {
    Bitmap solid(picture.width, picture.height);
    for (size_t i = 0; i < picture.rgba.size(); i += 4) {
        const int alpha = picture.rgba[i + 3];
        if (alpha < 64) continue;
        for (size_t c = 0; c < 3; ++c)
            solid.rgba[i + c] = uint8_t(std::min(255, (picture.rgba[i + c] * 255 + alpha / 2) / alpha));
        solid.rgba[i + 3] = 255;
    }
    return solid;
}

/// One pixel further: the mean colour of the coloured neighbours.
Bitmap grown(const Bitmap& solid) {
    Bitmap result = solid;
    for (int y = 0; y < solid.height; ++y)
        for (int x = 0; x < solid.width; ++x) {
            if (solid.pixel(x, y)[3] != 0) continue;
            std::array<int, 3> sums{};
            int count = 0;
            for (int ny = std::max(0, y - 1); ny <= std::min(solid.height - 1, y + 1); ++ny)
                for (int nx = std::max(0, x - 1); nx <= std::min(solid.width - 1, x + 1); ++nx) {
                    const uint8_t* near = solid.pixel(nx, ny);
                    if (near[3] == 0) continue;
                    for (size_t c = 0; c < 3; ++c) sums[c] += near[c];
                    ++count;
                }
            if (count == 0) continue;
            uint8_t* pixel = &result.rgba[(size_t(y) * size_t(solid.width) + size_t(x)) * 4];
            for (size_t c = 0; c < 3; ++c) pixel[c] = uint8_t(sums[c] / count);
            pixel[3] = 255;
        }
    return result;
}

}  // namespace

std::vector<OutlineContour> traceSilhouette(const Bitmap& picture) {
    std::vector<OutlineContour> contours = SilhouetteTracer(picture).contours();
    for (OutlineContour& contour : contours) {
        contour = simplified(contour);
        std::ranges::reverse(contour);
    }
    std::erase_if(contours, [](const OutlineContour& contour) { return contour.size() < 3; });
    return contours;
}

Bitmap opaquePicture(const Bitmap& picture) {
    constexpr int reach = 3;  // pixels that filtering may touch beyond the silhouette
    Bitmap solid = solidPart(picture);
    for (int step = 0; step < reach; ++step) solid = grown(solid);
    return solid;
}

}  // namespace platform
