#include "platform/pixels/QuadPaint.h"

#include <algorithm>
#include <cmath>

#include "platform/pixels/FilmPicture.h"

namespace platform {

namespace {

// A shape may gain a corner where it is cut in front of the camera.
struct Outline {
    struct Side {
        PaintCorner from;
        bool smooth;
        float reach;
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
        const float reach = paint.reach[static_cast<size_t>(i)];
        const bool isHere = here.w > kNearest, isNext = next.w > kNearest;
        if (isHere) cut.sides.push_back({here, smooth, reach});
        if (isHere == isNext) continue;
        const double t = (kNearest - here.w) / (next.w - here.w);
        const auto between = [t](double a, double b) { return a + t * (b - a); };
        const PaintCorner crossing{between(here.x, next.x), between(here.y, next.y), kNearest, 0, 0};
        cut.sides.push_back({crossing, isNext && smooth, isNext ? reach : 0});
    }
    return cut;
}

PlaceMatrix inverse(const PlaceMatrix& m) {
    const double c0 = m[4] * m[8] - m[5] * m[7], c1 = m[5] * m[6] - m[3] * m[8],
                 c2 = m[3] * m[7] - m[4] * m[6];
    const double determinant = m[0] * c0 + m[1] * c1 + m[2] * c2;
    PlaceMatrix result{c0, m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
                       c1, m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
                       c2, m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
    for (double& number : result) number /= determinant;
    return result;
}

PlaceMatrix product(const PlaceMatrix& a, const PlaceMatrix& b) {
    PlaceMatrix result{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            for (size_t k = 0; k < 3; ++k) result[row * 3 + column] += a[row * 3 + k] * b[k * 3 + column];
    return result;
}

// Places in a picture of this size at the corners.
using CornerPlaces = std::array<std::array<double, 2>, 3>;

// Three corners say all: a place on the canvas (times w) is a sum of theirs, and so is the place in the
// picture.
PlaceMatrix wayTo(const CornerPlaces& at, double width, double height, const PlaceMatrix& toCorners) {
    PlaceMatrix picture{};
    for (size_t i = 0; i < 3; ++i) {
        picture[i] = at[i][0] * width;
        picture[3 + i] = at[i][1] * height;
        picture[6 + i] = 1;
    }
    return product(picture, toCorners);
}

// From a pixel to the shares of the first three corners in it.
PlaceMatrix cornersOf(const QuadPaint& paint) {
    PlaceMatrix canvas{};
    for (size_t i = 0; i < 3; ++i) {
        canvas[i] = paint.corners[i].x;
        canvas[3 + i] = paint.corners[i].y;
        canvas[6 + i] = paint.corners[i].w;
    }
    // Pixels are named by their upper left corner and looked at in their middle.
    return product(inverse(canvas), {1, 0, 0.5, 0, 1, 0.5, 0, 0, 1});
}

bool isFinite(const PlaceMatrix& matrix) {
    return std::all_of(matrix.begin(), matrix.end(), [](double number) { return std::isfinite(number); });
}

// Without perspective q is 1.
void flatten(PlaceMatrix& m) {
    for (size_t i = 0; i < 6; ++i) m[i] /= m[8];
    m[6] = m[7] = 0;
    m[8] = 1;
}

// Pictures that are neither scaled nor turned lie on whole pixels when they do so but for the rounding of the
// matrices that placed them: then they are copied.
void settle(PlaceMatrix& m, double far) {
    const bool isStraight =
        (std::abs(m[0] - 1) + std::abs(m[1]) + std::abs(m[3]) + std::abs(m[4] - 1)) * far < 1.0 / 256;
    const double x = std::floor(m[2]) + 0.5, y = std::floor(m[5]) + 0.5;
    if (isStraight && std::abs(m[2] - x) < 1.0 / 256 && std::abs(m[5] - y) < 1.0 / 256)
        m = {1, 0, x, 0, 1, y, 0, 0, 1};
}

// Which places belong to which pixels; false when none do.
bool findPlaces(const QuadPaint& paint, PreparedPaint& prepared) {
    const PlaceMatrix toCorners = cornersOf(paint);
    const auto& c = paint.corners;
    prepared.picture = {paint.picture, paint.wrap,
                        wayTo({{{c[0].u, c[0].v}, {c[1].u, c[1].v}, {c[2].u, c[2].v}}}, paint.picture.width,
                              paint.picture.height, toCorners)};
    prepared.toPlace = wayTo({{{0, 1}, {1, 1}, {1, 0}}}, 1, 1, toCorners);
    prepared.mask.reset();
    if (paint.mask) {
        const MaskPaint& mask = *paint.mask;
        const CornerPlaces at{mask.at[0], mask.at[1], mask.at[2]};
        const PlaceMatrix toMask = wayTo(at, mask.picture.width, mask.picture.height, toCorners);
        prepared.mask = {{mask.picture, mask.wrap, toMask}, mask.byAlpha && !mask.premultiplied};
        if (!isFinite(toMask)) return false;
    }
    if (!isFinite(prepared.picture.toTexel) || !isFinite(prepared.toPlace)) return false;

    const PlaceMatrix& m = prepared.picture.toTexel;
    const double far = std::max(prepared.right, prepared.bottom);
    prepared.perspective = (std::abs(m[6]) + std::abs(m[7])) * far > 1e-7 * std::abs(m[8]);
    if (prepared.perspective) return true;
    flatten(prepared.toPlace);
    flatten(prepared.picture.toTexel);
    settle(prepared.picture.toTexel, far);
    if (prepared.mask) {
        flatten(prepared.mask->picture.toTexel);
        settle(prepared.mask->picture.toTexel, far);
    }
    return true;
}

// From the middle, so that the line is the same from either end.
PaintEdge edgeBetween(double x0, double y0, double x1, double y1, bool clockwise) {
    double x = y0 - y1, y = x1 - x0;
    const double length = std::hypot(x, y);
    if (length == 0) return {0, 0, 1, true};  // no edge: inside everywhere
    const double turn = (clockwise ? 1 : -1) / length;
    x *= turn;
    y *= turn;
    const double away = 0.5 * (x + y) - (x * 0.5 * (x0 + x1) + y * 0.5 * (y0 + y1));
    return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(away), true};
}

constexpr PaintEdge kNoEdge{0, 0, 1, true};

void pairEdges(const std::vector<PaintEdge>& edges, PreparedPaint& prepared) {
    prepared.edgePairs.clear();
    if (edges.size() == 4)
        prepared.edgePairs = {{edges[0], edges[2]}, {edges[1], edges[3]}};
    else
        for (const PaintEdge& edge : edges) prepared.edgePairs.push_back({edge, kNoEdge});
}

// What the shape looks like on the canvas.
struct Silhouette {
    std::vector<double> x, y;
    double area = 0;  // twice, with a sign
};

bool seeSilhouette(const std::vector<Outline::Side>& sides, Silhouette& seen) {
    const size_t count = sides.size();
    if (count < 3) return false;
    for (const Outline::Side& side : sides) {
        seen.x.push_back(side.from.x / side.from.w);
        seen.y.push_back(side.from.y / side.from.w);
        if (!std::isfinite(seen.x.back()) || !std::isfinite(seen.y.back())) return false;
    }
    for (size_t i = 0; i < count; ++i) {
        const size_t next = (i + 1) % count;
        seen.area += seen.x[i] * seen.y[next] - seen.x[next] * seen.y[i];
    }
    return std::abs(seen.area) >= 1e-6;
}

bool findBounds(const Silhouette& seen, double reach, int width, int height, PreparedPaint& prepared) {
    const auto pixel = [](double place, int size) {
        return static_cast<int>(std::clamp(place, 0.0, double(size)));
    };
    const auto [left, right] = std::minmax_element(seen.x.begin(), seen.x.end());
    const auto [top, bottom] = std::minmax_element(seen.y.begin(), seen.y.end());
    prepared.left = pixel(std::floor(*left - reach), width);
    prepared.top = pixel(std::floor(*top - reach), height);
    prepared.right = pixel(std::ceil(*right + reach), width);
    prepared.bottom = pixel(std::ceil(*bottom + reach), height);
    return prepared.left < prepared.right && prepared.top < prepared.bottom;
}

void findEdges(const Silhouette& seen, const std::vector<Outline::Side>& sides, PreparedPaint& prepared) {
    std::vector<PaintEdge> edges;
    for (size_t i = 0; i < sides.size(); ++i) {
        const size_t next = (i + 1) % sides.size();
        PaintEdge edge = edgeBetween(seen.x[i], seen.y[i], seen.x[next], seen.y[next], seen.area > 0);
        edge.smooth = sides[i].smooth;
        edge.away += sides[i].reach;
        edges.push_back(edge);
    }
    pairEdges(edges, prepared);
}

// What is not a number is 0.
float bounded(float part) { return std::min(std::max(0.0f, part), 1.0f); }

uint8_t level(float part) { return static_cast<uint8_t>(bounded(part) * 255 + 0.5f); }

bool isTinted(const QuadPaint& paint) { return paint.tint != std::array<float, 4>{1, 1, 1, 1}; }

float opacityOf(const QuadPaint& paint) { return bounded(paint.opacity) * bounded(paint.tint[3]); }

void findColours(const QuadPaint& paint, PreparedPaint& prepared) {
    const SentColours sent = sentColours(paint.blend);
    const bool isShape = paint.isShape || isTinted(paint);
    prepared.blend = paint.blend;
    if (sent == SentColours::Multiplied && paint.blend.source == BlendFactor::SrcAlpha)
        prepared.blend.source = BlendFactor::One;
    prepared.premultiplied = paint.premultiplied;
    prepared.paintsPremultiplied = sent == SentColours::Multiplied || (sent == SentColours::Faded && isShape);
    prepared.fadesColours = sent != SentColours::Straight;
    const float opacity = opacityOf(paint), fades = prepared.fadesColours ? opacity : 1;
    prepared.levels = {level(paint.tint[2] * fades), level(paint.tint[1] * fades),
                       level(paint.tint[0] * fades), level(opacity)};
    prepared.gradient = paint.gradient;
    prepared.filter = paint.filter;
    prepared.key = !paint.picture.isEmpty() ? paint.key : std::nullopt;
    prepared.hides = hides(paint);
}

// Each pixel shows one of the picture's and nothing else.
bool isCopy(const PreparedPaint& paint) {
    const PlaceMatrix& m = paint.picture.toTexel;
    const double left = m[2] - 0.5, top = m[5] - 0.5;
    return paint.hides && !paint.isFaded() && !paint.filter && !paint.perspective && m[0] == 1 && m[1] == 0 &&
           m[3] == 0 && m[4] == 1 && left == std::floor(left) && top == std::floor(top) &&
           paint.left + left >= 0 && paint.top + top >= 0 &&
           paint.right + left <= paint.picture.surface.width &&
           paint.bottom + top <= paint.picture.surface.height;
}

void makePixels(Surface& surface) {
    if (surface.film && !surface.pixels) surface.pixels = surface.film->data();
}

void takeFilms(PreparedPaint& prepared) {
    Surface& picture = prepared.picture.surface;
    prepared.planes =
        picture.film && !picture.pixels && isCopy(prepared) ? picture.film->planesAlone() : nullptr;
    if (!prepared.planes) makePixels(picture);
    if (prepared.mask) makePixels(prepared.mask->picture.surface);
}

// What is wholly transparent leaves everything as it is.
bool needsOpacity(const BlendFunction& blend) {
    return blend.destination == BlendFactor::One || blend.destination == BlendFactor::OneMinusSrcAlpha ||
           (blend.destination == BlendFactor::OneMinusSrcColor &&
            sentColours(blend) != SentColours::Straight);
}

}  // namespace

SentColours sentColours(const BlendFunction& blend) {
    switch (blend.source) {
        case BlendFactor::One:
            return SentColours::Multiplied;
        case BlendFactor::SrcAlpha:
            // The same sum, as long as the other factor does not look at the source's colour.
            return blend.destination == BlendFactor::SrcColor ||
                           blend.destination == BlendFactor::OneMinusSrcColor
                       ? SentColours::Straight
                       : SentColours::Multiplied;
        case BlendFactor::Zero:
        case BlendFactor::SrcAlphaSaturate:
            return SentColours::Straight;
        default:
            return SentColours::Faded;
    }
}

bool hides(const QuadPaint& paint) {
    const BlendFunction& blend = paint.blend;
    const bool isOver = (blend.source == BlendFactor::SrcAlpha || blend.source == BlendFactor::One) &&
                        blend.destination == BlendFactor::OneMinusSrcAlpha;
    const bool isOpaque = (paint.picture.opaque || paint.picture.isEmpty()) && level(opacityOf(paint)) == 255;
    if (!isOver || !isOpaque || paint.mask || paint.gradient || paint.key) return false;
    if (!paint.filter) return true;
    const FilterPaint& filter = *paint.filter;
    return filter.cornerRadius <= 0 && filter.pictureColor[3] >= 1 &&
           (filter.borderWidth <= 0 || filter.borderColor[3] >= 1);
}

bool preparePaint(const QuadPaint& paint, int width, int height, PreparedPaint& prepared) {
    if (needsOpacity(paint.blend) && level(opacityOf(paint)) == 0) return false;
    const std::vector<Outline::Side> sides = inFrontOfCamera(paint).sides;
    Silhouette seen;
    if (!seeSilhouette(sides, seen)) return false;
    const float reach = *std::max_element(paint.reach.begin(), paint.reach.end());
    if (!findBounds(seen, 0.5 + std::max(reach, 0.0f), width, height, prepared)) return false;
    findEdges(seen, sides, prepared);
    findColours(paint, prepared);
    prepared.leavesClear =
        needsOpacity(paint.blend) && !paint.key && !paint.filter && paint.wrap == Wrap::Clamp;
    if (!findPlaces(paint, prepared)) return false;
    takeFilms(prepared);
    return true;
}

}  // namespace platform
