#include "platform/pixels/MeshPaint.h"

#include <algorithm>
#include <cmath>

#include "platform/pixels/MeshSamples.h"
#include "platform/pixels/TilePaint.h"

namespace platform {

namespace {

struct ClipPlace {
    float x, y, z, w;
};

ClipPlace clipPlace(const Matrix4& m, const float* at) {
    const auto line = [&](size_t i) {
        return m[i] * at[0] + m[4 + i] * at[1] + m[8 + i] * at[2] + m[12 + i];
    };
    return {line(0), line(1), line(2), line(3)};
}

ClipPlace between(const ClipPlace& a, const ClipPlace& b, float part) {
    const auto mix = [part](float from, float to) { return from + (to - from) * part; };
    return {mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.w, b.w)};
}

// Of what GL sees: in front of the near plane, before the far one, and not behind the eye.
constexpr size_t kBounds = 3;
float insideBy(size_t bound, const ClipPlace& at) {
    constexpr float kNearest = 1e-6f;
    return bound == 0 ? at.w + at.z : bound == 1 ? at.w - at.z : at.w - kNearest;
}

// A convex piece of a triangle; each bound may add a corner.
struct Piece {
    std::array<ClipPlace, 3 + kBounds> corners;
    size_t count = 3;
};

// Both triangles at an edge cut it at the same place, because it is always looked at from the inside.
void cut(size_t bound, Piece& piece) {
    Piece kept;
    kept.count = 0;
    for (size_t i = 0; i < piece.count; ++i) {
        const ClipPlace &here = piece.corners[i], &next = piece.corners[(i + 1) % piece.count];
        const float inHere = insideBy(bound, here), inNext = insideBy(bound, next);
        if (inHere >= 0) kept.corners[kept.count++] = here;
        if ((inHere >= 0) == (inNext >= 0)) continue;
        kept.corners[kept.count++] = inHere >= 0 ? between(here, next, inHere / (inHere - inNext))
                                                 : between(next, here, inNext / (inNext - inHere));
    }
    piece = kept;
}

class Finder {
  public:
    Finder(const MeshPaint& paint, int width, int height, PreparedMesh& prepared)
        : paint_(paint), width_(width), height_(height), prepared_(prepared) {}

    void find() {
        for (size_t i = 0; i + 2 < paint_.corners.count; i += 3) add(static_cast<uint32_t>(i));
    }

  private:
    void add(uint32_t first) {
        Piece piece;
        const float* numbers = paint_.corners.numbers + first * MeshCorners::kNumbers;
        for (size_t i = 0; i < 3; ++i)
            piece.corners[i] = clipPlace(paint_.toClip, numbers + i * MeshCorners::kNumbers);
        if (isBeside(piece)) return;
        for (size_t bound = 0; bound < kBounds; ++bound) {
            const auto isInside = [&](size_t i) { return insideBy(bound, piece.corners[i]) >= 0; };
            if (!(isInside(0) && isInside(1) && isInside(2)) || piece.count > 3) cut(bound, piece);
        }
        for (size_t i = 1; i + 1 < piece.count; ++i)
            addSeen(first, {piece.corners[0], piece.corners[i], piece.corners[i + 1]});
    }

    // All corners lie beyond one side of what is seen.
    static bool isBeside(const Piece& piece) {
        bool beyond[5] = {true, true, true, true, true};
        for (size_t i = 0; i < 3; ++i) {
            const ClipPlace& at = piece.corners[i];
            beyond[0] = beyond[0] && at.x < -at.w;
            beyond[1] = beyond[1] && at.x > at.w;
            beyond[2] = beyond[2] && at.y < -at.w;
            beyond[3] = beyond[3] && at.y > at.w;
            beyond[4] = beyond[4] && at.z < -at.w;
        }
        return beyond[0] || beyond[1] || beyond[2] || beyond[3] || beyond[4];
    }

    void addSeen(uint32_t first, const std::array<ClipPlace, 3>& corners) {
        SeenTriangle seen{{}, {}, {}, first, {}};
        for (size_t i = 0; i < 3; ++i) {
            const ClipPlace& at = corners[i];
            const float near = 1 / at.w;
            seen.x[i] = (at.x * near + 1) * 0.5f * static_cast<float>(width_);
            seen.y[i] = (1 - at.y * near) * 0.5f * static_cast<float>(height_);
            seen.depth[i] = at.z * near * 0.5f + 0.5f;
        }
        // Negative where corners run counter-clockwise, because y runs down; not a number where they are not.
        const double area = twiceArea(seen);
        const bool isSeen = paint_.facing == MeshFacing::Front  ? area < 0
                            : paint_.facing == MeshFacing::Back ? area > 0
                                                                : area != 0 && std::isfinite(area);
        if (!isSeen || !std::isfinite(area)) return;
        seen.box = touchedPixels(seen);
        if (seen.box.isEmpty()) return;
        for (int band = seen.box.top / kTileRows; band <= (seen.box.bottom - 1) / kTileRows; ++band)
            ++prepared_.bandEnds[static_cast<size_t>(band)];
        prepared_.triangles.push_back(seen);
    }

    PixelBox touchedPixels(const SeenTriangle& seen) const {
        const auto first = [](const Vector3& at, int size) {
            const float least = std::min({at[0], at[1], at[2]}) - 0.5f - kSampleReach;
            return static_cast<int>(std::ceil(std::clamp(least, 0.0f, static_cast<float>(size))));
        };
        const auto beyond = [](const Vector3& at, int size) {
            const float most = std::max({at[0], at[1], at[2]}) + 0.5f + kSampleReach;
            return static_cast<int>(std::floor(std::clamp(most, 0.0f, static_cast<float>(size))));
        };
        return {first(seen.x, width_), first(seen.y, height_), beyond(seen.x, width_),
                beyond(seen.y, height_)};
    }

    const MeshPaint& paint_;
    const int width_, height_;
    PreparedMesh& prepared_;
};

// From the number of triangles in each band to lists of them.
void sortIntoBands(PreparedMesh& prepared) {
    uint32_t sum = 0;
    for (uint32_t& end : prepared.bandEnds) {
        const uint32_t count = end;
        end = sum;
        sum += count;
    }
    prepared.bandTriangles.resize(sum);
    for (size_t i = 0; i < prepared.triangles.size(); ++i) {
        const PixelBox& box = prepared.triangles[i].box;
        for (int band = box.top / kTileRows; band <= (box.bottom - 1) / kTileRows; ++band)
            prepared.bandTriangles[prepared.bandEnds[static_cast<size_t>(band)]++] = static_cast<uint32_t>(i);
    }
}

// What is not a number is 0.
float within(float number, float least, float most) {
    return number > least ? std::min(number, most) : number <= least ? least : 0;
}

Vector3 turned(const Vector3& vector) {
    const float squared = vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2];
    if (!(squared > 0) || !std::isfinite(squared)) return {0, 0, 0};
    const float part = 1 / std::sqrt(squared);
    return {vector[0] * part, vector[1] * part, vector[2] * part};
}

constexpr float kMost = 1e6f;  // of colours and exponents: sums stay finite with it

MeshPower powerOf(float exponent) {
    constexpr float kLeast = 0.0001f, kMostMultiplied = 256;
    MeshPower power{within(exponent, -kMost, kMost), false, kLeast};
    power.isWhole = power.exponent >= 0 && power.exponent <= kMostMultiplied &&
                    power.exponent == std::floor(power.exponent);
    // Numbers too small to be seen, and slow to multiply, do not come about.
    if (power.isWhole && power.exponent > 0) power.least = std::max(kLeast, std::exp2(-100 / power.exponent));
    return power;
}

PreparedLight prepareLight(MeshLight light) {
    for (Vector3* colour : {&light.ambient, &light.diffuse, &light.specular})
        for (float& part : *colour) part = within(part, -kMost, kMost);
    if (light.kind == MeshLightKind::Directional) light.place = turned(light.place);
    for (float& part : light.place) part = within(part, -1e15f, 1e15f);
    light.coneDirection = turned(light.coneDirection);
    if (light.coneDirection == Vector3{0, 0, 0}) light.coneDirection = {0, 0, -1};
    return {light, powerOf(light.coneExponent), powerOf(light.shininess), light.specular != Vector3{0, 0, 0}};
}

void findLight(PreparedMesh& prepared) {
    prepared.lights.clear();
    prepared.ambient = {};
    prepared.isGlossy = false;
    for (const MeshLight& each : prepared.paint.lights) {
        const PreparedLight& light = prepared.lights.emplace_back(prepareLight(each));
        for (size_t i = 0; i < 3; ++i) prepared.ambient[i] += light.light.ambient[i];
        prepared.isGlossy = prepared.isGlossy || light.isGlossy;
    }
}

bool isLaidOver(const BlendFunction& blend) {
    return (blend.source == BlendFactor::SrcAlpha || blend.source == BlendFactor::One) &&
           blend.destination == BlendFactor::OneMinusSrcAlpha;
}

void findColours(PreparedMesh& prepared) {
    MeshPaint& paint = prepared.paint;
    for (float& part : paint.tint) part = within(part, 0, 1);
    paint.opacity = within(paint.opacity, 0, 1);
    for (float& part : paint.eye) part = within(part, -1e15f, 1e15f);
    for (float& part : paint.glow) part = within(part, 0, kMost);
    findLight(prepared);
    const bool isOpaque = paint.isOpaque || paint.picture.opaque || !paint.picture.pixels;
    prepared.hides = isOpaque && paint.opacity >= 1 && paint.tint[3] >= 1 && isLaidOver(paint.blend);
    prepared.sent = sentColours(paint.blend);
    if (prepared.sent == SentColours::Multiplied) paint.blend.source = BlendFactor::One;
    if (prepared.sent == SentColours::Faded && paint.isShape) prepared.sent = SentColours::Multiplied;
}

}  // namespace

double twiceArea(const SeenTriangle& seen) {
    const auto [x, y] = std::pair(seen.x, seen.y);
    return (double{x[1]} - x[0]) * (double{y[2]} - y[0]) - (double{x[2]} - x[0]) * (double{y[1]} - y[0]);
}

bool prepareMesh(const MeshPaint& paint, int width, int height, PreparedMesh& prepared) {
    prepared.paint = paint;
    prepared.triangles.clear();
    prepared.bandEnds.assign(static_cast<size_t>((height + kTileRows - 1) / kTileRows), 0);
    findColours(prepared);
    Finder(paint, width, height, prepared).find();
    if (prepared.triangles.empty()) return false;
    sortIntoBands(prepared);
    return true;
}

}  // namespace platform
