#include "core/GLESUtils/ParametricSurface.h"

#include <algorithm>
#include <cmath>
#include <glm/gtc/constants.hpp>

namespace multiscene {

namespace {

constexpr float fullTurn = glm::two_pi<float>();

/// Appends a grid of places from (0, 0), the texture's upper left, to (1, 1); `at(s, t)` gives the corner of
/// each. Triangles without an area, as those at a pole, are left out.
template <typename At>
void addGrid(int columns, int rows, const At& at, std::vector<MeshVertex>& corners) {
    const auto stepOf = [](int i, int count) { return static_cast<float>(i) / static_cast<float>(count); };
    std::vector<MeshVertex> grid;
    grid.reserve(static_cast<size_t>((columns + 1) * (rows + 1)));
    for (int row = 0; row <= rows; ++row)
        for (int column = 0; column <= columns; ++column)
            grid.push_back(at(stepOf(column, columns), stepOf(row, rows)));
    const auto addTriangle = [&](const MeshVertex& a, const MeshVertex& b, const MeshVertex& c) {
        const glm::vec3 &p = a.position, &q = b.position, &r = c.position;
        if (p == q || q == r || r == p) return;
        corners.insert(corners.end(), {a, b, c});
    };
    corners.reserve(corners.size() + static_cast<size_t>(columns * rows * 6));
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const MeshVertex* above = &grid[static_cast<size_t>(row * (columns + 1) + column)];
            const MeshVertex* below = above + columns + 1;
            addTriangle(below[0], below[1], above[1]);
            addTriangle(below[0], above[1], above[0]);
        }
}

/// The direction of a place once around y: 0.5 faces the viewer.
glm::vec3 around(float s) {
    // The seam's two ends are one place, to the bit.
    const float angle = s >= 1 ? -fullTurn / 2 : (s - 0.5f) * fullTurn;
    return {std::sin(angle), 0, std::cos(angle)};
}

int within(int segments) { return std::clamp(segments, fewestSegments, mostSegments); }

/// A flat end of a tube, with the texture's middle.
void addEnd(float radius, float y, float direction, int segments, std::vector<MeshVertex>& corners) {
    if (!(radius > 0)) return;
    const glm::vec3 normal(0, direction, 0);
    const auto corner = [&](const glm::vec3& toRim) {
        return MeshVertex{.position = radius * toRim + glm::vec3(0, y, 0),
                          .normal = normal,
                          .textureCoordinate = {0.5f + toRim.x / 2, 0.5f + direction * toRim.z / 2}};
    };
    for (int i = 0; i < segments; ++i) {
        const float parts = static_cast<float>(segments);
        const glm::vec3 here = around(static_cast<float>(i) / parts),
                        next = around(static_cast<float>(i + 1) / parts);
        corners.push_back(corner(glm::vec3(0)));
        corners.push_back(corner(direction > 0 ? here : next));
        corners.push_back(corner(direction > 0 ? next : here));
    }
}

}  // namespace

std::vector<MeshVertex> sphereTriangles(float radius, int segments) {
    std::vector<MeshVertex> corners;
    const int count = within(segments);
    addGrid(
        count, std::max(2, count / 2),
        [&](float s, float t) {
            const float height = t <= 0 ? 1 : t >= 1 ? -1 : std::cos(t * fullTurn / 2);
            const float ring = t <= 0 || t >= 1 ? 0 : std::sin(t * fullTurn / 2);
            const glm::vec3 normal = ring * around(s) + glm::vec3(0, height, 0);
            return MeshVertex{radius * normal, normal, {s, t}};
        },
        corners);
    return corners;
}

std::vector<MeshVertex> tubeTriangles(const TubeShape& shape, int segments) {
    std::vector<MeshVertex> corners;
    const int count = within(segments);
    const float slope = shape.bottomRadius - shape.topRadius;
    // A cone's point belongs to triangles with normals of their own, so it has several rows.
    constexpr int rows = 8;
    addGrid(
        count, slope == 0 ? 1 : rows,
        [&](float s, float t) {
            const glm::vec3 out = around(s);
            const float radius = shape.topRadius + slope * t;
            const glm::vec3 normal = glm::normalize(shape.height * out + glm::vec3(0, slope, 0));
            return MeshVertex{radius * out + glm::vec3(0, shape.height * (0.5f - t), 0), normal, {s, t}};
        },
        corners);
    if (!shape.hasEnds) return corners;
    addEnd(shape.topRadius, shape.height / 2, 1, count, corners);
    addEnd(shape.bottomRadius, -shape.height / 2, -1, count, corners);
    return corners;
}

std::vector<MeshVertex> torusTriangles(float radius, float tubeRadius, int segments) {
    std::vector<MeshVertex> corners;
    const int count = within(segments);
    addGrid(
        count, std::max(fewestSegments, count / 2),
        [&](float s, float t) {
            const glm::vec3 out = around(s);
            const glm::vec3 onTube = around(t);  // z: away from the ring's middle; x: down
            const glm::vec3 normal = onTube.z * out - glm::vec3(0, onTube.x, 0);
            return MeshVertex{radius * out + tubeRadius * normal, normal, {s, t}};
        },
        corners);
    return corners;
}

std::vector<MeshVertex> roundedBoxTriangles(const glm::vec3& size, float cornerRadius, int segments) {
    const glm::vec3 half = glm::abs(size) / 2.0f;
    const float radius = std::clamp(cornerRadius, 0.0f, std::min({half.x, half.y, half.z}));
    const glm::vec3 inner = half - radius;
    const int steps = radius > 0 ? std::max(1, within(segments) / 8) : 0;  // along an eighth of a round edge
    // Along a side: the eighths at its ends, and what is flat between them.
    const auto place = [&](float part, float flat, float whole) {
        const int count = 2 * steps + 1, i = static_cast<int>(std::lround(part * static_cast<float>(count)));
        const bool isBefore = i <= steps;
        const int beyond = isBefore ? steps - i : i - steps - 1;
        const float angle =
            steps == 0 ? 0 : fullTurn / 8 * static_cast<float>(beyond) / static_cast<float>(steps);
        // Sides meet at the same places, to the bit.
        return (isBefore ? -1.0f : 1.0f) * (beyond == steps ? whole : flat + radius * std::tan(angle));
    };
    std::vector<MeshVertex> corners;
    for (int axis = 0; axis < 3; ++axis)
        for (const float direction : {-1.0f, 1.0f}) {
            glm::vec3 outward(0), up(0, 1, 0);
            outward[axis] = direction;
            if (axis == 1) up = {0, 0, -direction};
            const glm::vec3 right = glm::cross(up, outward);
            const auto along = [](const glm::vec3& lengths, const glm::vec3& unit) {
                return glm::dot(lengths, glm::abs(unit));
            };
            addGrid(
                2 * steps + 1, 2 * steps + 1,
                [&](float s, float t) {
                    const glm::vec2 sides(along(half, right), along(half, up));
                    const float x = place(s, along(inner, right), sides.x),
                                y = -place(t, along(inner, up), sides.y);
                    const glm::vec3 onBox = outward * half + x * right + y * up;
                    const glm::vec3 middle = glm::clamp(onBox, -inner, inner);
                    const glm::vec3 normal = radius > 0 ? glm::normalize(onBox - middle) : outward;
                    return MeshVertex{radius > 0 ? middle + radius * normal : onBox,
                                      normal,
                                      {0.5f + x / (2 * sides.x), 0.5f - y / (2 * sides.y)}};
                },
                corners);
        }
    return corners;
}

std::vector<MeshVertex> waveTriangles(const WaveShape& shape, int segments) {
    std::vector<MeshVertex> corners;
    const float waves = shape.waveLength > 0 ? shape.width / shape.waveLength : 0;
    constexpr float lean = 0.35f;  // waves run a little downwards, as those of cloth
    addGrid(
        within(segments), within(segments / 2),
        [&](float s, float t) {
            const float grown = shape.heldWidth > 0 ? std::min(1.0f, s / shape.heldWidth) : 1;
            const float growth = shape.heldWidth > 0 && s < shape.heldWidth ? 1 / shape.heldWidth : 0;
            const float angle = fullTurn * (waves * (s + lean * t) - shape.phase);
            const float swing = waves > 0 ? shape.amplitude * std::sin(angle) : 0;
            const float turn = waves > 0 ? shape.amplitude * std::cos(angle) * fullTurn * waves : 0;
            // How z changes along the two sides, and from that the normal.
            const float alongWidth = (growth * swing + grown * turn) / shape.width;
            const float alongHeight = -grown * turn * lean / shape.height;
            return MeshVertex{{shape.width * (s - 0.5f), shape.height * (0.5f - t), grown * swing},
                              glm::normalize(glm::vec3(-alongWidth, -alongHeight, 1)),
                              {s, t}};
        },
        corners);
    return corners;
}

std::vector<MeshVertex> curlTriangles(const CurlShape& shape, int segments) {
    std::vector<MeshVertex> corners;
    constexpr float gap = 0.06f;  // a roll grows by this share of its radius with each turn
    const float flat = shape.width * (1 - std::clamp(shape.curl, 0.0f, 1.0f));
    addGrid(
        within(segments), std::max(1, segments / 16),
        [&](float s, float t) {
            const float along = s * shape.width - flat, y = shape.height * (0.5f - t);
            if (along <= 0 || !(shape.radius > 0))
                return MeshVertex{{shape.width * (s - 0.5f), y, 0}, {0, 0, 1}, {s, t}};
            // The edge lies innermost: what is rolled later lies around it.
            const float whole = (shape.width - flat) / shape.radius, angle = along / shape.radius;
            const float radius = shape.radius * (1 + gap * (whole - angle) / fullTurn);
            const float outer = shape.radius * (1 + gap * whole / fullTurn);
            return MeshVertex{
                {flat - shape.width / 2 + radius * std::sin(angle), y, outer - radius * std::cos(angle)},
                {-std::sin(angle), 0, std::cos(angle)},
                {s, t}};
        },
        corners);
    return corners;
}

}  // namespace multiscene
