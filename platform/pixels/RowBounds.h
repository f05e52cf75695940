// Private to platform/pixels: which pixels of a row a shape covers.
#pragma once

#include <algorithm>
#include <cmath>

#include "platform/pixels/QuadPaint.h"

namespace platform {

// A run of pixels in one row; `to` lies beyond it.
struct Run {
    int from, to;
    bool isEmpty() const { return from >= to; }
};

// Where a line bounds a row: `inside` pixels are certainly covered wholly by it, `touched` ones perhaps. What
// lies between is asked pixel by pixel, so a little more than need be does not show.
struct RowBounds {
    Run touched, inside;
};

inline void boundBy(const PaintEdge& edge, int row, RowBounds& bounds) {
    // Coverage is rounded to 1/255: four smooth edges that miss a pixel's rim by so little cover all of it.
    constexpr double kSlack = 1.0 / 64, kUnseen = 1.0 / 4096;
    const double rest = static_cast<double>(edge.y) * row + edge.away;
    const double outer = (edge.smooth ? -0.5 : 0) - kSlack, inner = edge.smooth ? 0.5 - kUnseen : kSlack;
    if (std::abs(edge.x) < 1e-6) {
        if (rest < outer) bounds.touched.to = bounds.touched.from;
        if (rest < inner) bounds.inside.to = bounds.inside.from;
        return;
    }
    const auto column = [&](double distance) { return std::clamp((distance - rest) / edge.x, -1e6, 1e6); };
    const auto first = [](double place) { return static_cast<int>(std::ceil(place)); };
    const auto beyond = [](double place) { return static_cast<int>(std::floor(place)) + 1; };
    if (edge.x > 0) {
        bounds.touched.from = std::max(bounds.touched.from, first(column(outer)));
        bounds.inside.from = std::max(bounds.inside.from, first(column(inner)));
    } else {
        bounds.touched.to = std::min(bounds.touched.to, beyond(column(outer)));
        bounds.inside.to = std::min(bounds.inside.to, beyond(column(inner)));
    }
}

inline RowBounds rowBounds(const PreparedPaint& paint, int row, Run within) {
    RowBounds bounds{within, within};
    for (const auto& pair : paint.edgePairs)
        for (const PaintEdge& edge : pair) boundBy(edge, row, bounds);
    if (bounds.inside.isEmpty()) bounds.inside = {bounds.touched.to, bounds.touched.to};
    return bounds;
}

}  // namespace platform
