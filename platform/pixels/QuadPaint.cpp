#include "platform/pixels/QuadPaint.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

using Matrix = std::array<double, 9>;  // row-major

// A shape may gain a corner where it is cut in front of the camera.
struct Outline {
    struct Side {
        PaintCorner from;
        bool smooth;
    };
    std::vector<Side> sides;
};

constexpr double kNearest = 1e-4;  // of w: what is nearer than that lies behind the camera

Outline inFrontOfCamera(const QuadPaint& paint) {
    Outline cut;
    for (int i = 0; i < paint.cornerCount; ++i) {
        const PaintCorner& here = paint.corners[static_cast<size_t>(i)];
        const PaintCorner& next = paint.corners[static_cast<size_t>((i + 1) % paint.cornerCount)];
        const bool smooth = paint.smooth[static_cast<size_t>(i)];
        const bool isHere = here.w > kNearest, isNext = next.w > kNearest;
        if (isHere) cut.sides.push_back({here, smooth});
        if (isHere == isNext) continue;
        const double t = (kNearest - here.w) / (next.w - here.w);
        const auto between = [t](double a, double b) { return a + t * (b - a); };
        const PaintCorner crossing{between(here.x, next.x), between(here.y, next.y), kNearest, 0, 0};
        cut.sides.push_back({crossing, isNext && smooth});
    }
    return cut;
}

Matrix inverse(const Matrix& m) {
    const double c0 = m[4] * m[8] - m[5] * m[7], c1 = m[5] * m[6] - m[3] * m[8],
                 c2 = m[3] * m[7] - m[4] * m[6];
    const double determinant = m[0] * c0 + m[1] * c1 + m[2] * c2;
    Matrix result{c0, m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
                  c1, m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
                  c2, m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
    for (double& number : result) number /= determinant;
    return result;
}

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            for (size_t k = 0; k < 3; ++k) result[row * 3 + column] += a[row * 3 + k] * b[k * 3 + column];
    return result;
}

// Three corners say all: a place on the canvas (times w) is a sum of theirs, and so is the place in the
// picture.
Matrix texelsOf(const QuadPaint& paint) {
    Matrix canvas{}, picture{};
    for (size_t i = 0; i < 3; ++i) {
        const PaintCorner& corner = paint.corners[i];
        canvas[i] = corner.x;
        canvas[3 + i] = corner.y;
        canvas[6 + i] = corner.w;
        picture[i] = corner.u * paint.picture.width;
        picture[3 + i] = corner.v * paint.picture.height;
        picture[6 + i] = 1;
    }
    // Pixels are named by their upper left corner and looked at in their middle.
    return product(product(picture, inverse(canvas)), {1, 0, 0.5, 0, 1, 0.5, 0, 0, 1});
}

// Without perspective q is 1. Pictures that are neither scaled nor turned lie on whole pixels when they do so
// but for the rounding of the matrices that placed them: then they are copied.
void settle(PreparedPaint& prepared) {
    Matrix& m = prepared.toTexel;
    const double far = std::max(prepared.right, prepared.bottom);
    prepared.perspective = (std::abs(m[6]) + std::abs(m[7])) * far > 1e-7 * std::abs(m[8]);
    if (prepared.perspective) return;
    for (size_t i = 0; i < 6; ++i) m[i] /= m[8];
    m[6] = m[7] = 0;
    m[8] = 1;
    const bool isStraight =
        (std::abs(m[0] - 1) + std::abs(m[1]) + std::abs(m[3]) + std::abs(m[4] - 1)) * far < 1.0 / 256;
    const double x = std::floor(m[2]) + 0.5, y = std::floor(m[5]) + 0.5;
    if (isStraight && std::abs(m[2] - x) < 1.0 / 256 && std::abs(m[5] - y) < 1.0 / 256)
        m = {1, 0, x, 0, 1, y, 0, 0, 1};
}

PaintEdge edgeBetween(double x0, double y0, double x1, double y1, bool clockwise, bool smooth) {
    double x = y0 - y1, y = x1 - x0;
    const double length = std::hypot(x, y);
    if (length == 0) return {0, 0, 1, smooth};  // no edge: inside everywhere
    const double turn = (clockwise ? 1 : -1) / length;
    x *= turn;
    y *= turn;
    const double away = -(x * x0 + y * y0) + 0.5 * (x + y);
    return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(away), smooth};
}

constexpr PaintEdge kNoEdge{0, 0, 1, true};

void pairEdges(const std::vector<PaintEdge>& edges, PreparedPaint& prepared) {
    prepared.edgePairs.clear();
    if (edges.size() == 4)
        prepared.edgePairs = {{edges[0], edges[2]}, {edges[1], edges[3]}};
    else
        for (const PaintEdge& edge : edges) prepared.edgePairs.push_back({edge, kNoEdge});
}

}  // namespace

bool preparePaint(const QuadPaint& paint, int width, int height, PreparedPaint& prepared) {
    prepared.opacity = static_cast<int>(std::clamp(paint.opacity, 0.0f, 1.0f) * 255 + 0.5f);
    if (prepared.opacity == 0 || !paint.picture.pixels) return false;
    const std::vector<Outline::Side> sides = inFrontOfCamera(paint).sides;
    const size_t count = sides.size();
    if (count < 3) return false;

    std::vector<double> x(count), y(count);
    double area = 0;
    for (size_t i = 0; i < count; ++i) {
        x[i] = sides[i].from.x / sides[i].from.w;
        y[i] = sides[i].from.y / sides[i].from.w;
        if (!std::isfinite(x[i]) || !std::isfinite(y[i])) return false;
    }
    for (size_t i = 0; i < count; ++i) {
        const size_t next = (i + 1) % count;
        area += x[i] * y[next] - x[next] * y[i];
    }
    if (std::abs(area) < 1e-6) return false;

    const auto pixel = [](double place, int size) {
        return static_cast<int>(std::clamp(place, 0.0, double(size)));
    };
    prepared.left = pixel(std::floor(*std::min_element(x.begin(), x.end()) - 0.5), width);
    prepared.top = pixel(std::floor(*std::min_element(y.begin(), y.end()) - 0.5), height);
    prepared.right = pixel(std::ceil(*std::max_element(x.begin(), x.end()) + 0.5), width);
    prepared.bottom = pixel(std::ceil(*std::max_element(y.begin(), y.end()) + 0.5), height);
    if (prepared.left >= prepared.right || prepared.top >= prepared.bottom) return false;

    std::vector<PaintEdge> edges;
    for (size_t i = 0; i < count; ++i) {
        const size_t next = (i + 1) % count;
        edges.push_back(edgeBetween(x[i], y[i], x[next], y[next], area > 0, sides[i].smooth));
    }
    pairEdges(edges, prepared);

    prepared.picture = paint.picture;
    prepared.meeting = paint.meeting;
    prepared.wrap = paint.wrap;
    prepared.toTexel = texelsOf(paint);
    for (const double number : prepared.toTexel)
        if (!std::isfinite(number)) return false;
    settle(prepared);
    return true;
}

}  // namespace platform
