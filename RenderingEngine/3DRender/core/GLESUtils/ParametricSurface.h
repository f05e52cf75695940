// Surfaces that formulas give, as triangles. All lie around the origin; y is their axis where they have one.
// A texture's upper left corner is (0, 0). Outsides run counter-clockwise.
#pragma once

#include <vector>

#include "core/GLESUtils/Geometry.h"

namespace multiscene {

/// Once around a shape, or along a side.
inline constexpr int fewestSegments = 3, mostSegments = 256;

/// The texture goes once around, its middle facing the viewer; its upper edge is the pole above.
std::vector<MeshVertex> sphereTriangles(float radius, int segments);

/// A cylinder, or with one radius of 0 a cone. The texture goes once around; on the ends it lies flat.
struct TubeShape {
    float topRadius = 0, bottomRadius = 0, height = 0;
    bool hasEnds = true;
};
std::vector<MeshVertex> tubeTriangles(const TubeShape& shape, int segments);

/// A ring around y; `tubeRadius` is half of its thickness. The texture goes once around the ring, its edges
/// meeting on the inside.
std::vector<MeshVertex> torusTriangles(float radius, float tubeRadius, int segments);

/// A box with round edges and corners; each of its six sides shows the whole texture.
std::vector<MeshVertex> roundedBoxTriangles(const glm::vec3& size, float cornerRadius, int segments);

/// A rectangle that waves like a flag: its left edge is held, its right one swings furthest.
struct WaveShape {
    float width = 0, height = 0;
    float amplitude = 0;   ///< of the swing at the right edge
    float waveLength = 0;  ///< from crest to crest; 0: no waves
    float phase = 0;       ///< in waves: 1 is the picture of 0 again
    float heldWidth = 0;   ///< share of the width, from the left, over which the swing grows; 0: none is held
};
std::vector<MeshVertex> waveTriangles(const WaveShape& shape, int segments);

/// A rectangle of which a part, from its right edge on, is rolled up towards the viewer.
struct CurlShape {
    float width = 0, height = 0;
    float radius = 0;  ///< of the roll
    float curl = 0;    ///< share of the width that is rolled up, 0 to 1
};
std::vector<MeshVertex> curlTriangles(const CurlShape& shape, int segments);

}  // namespace multiscene
