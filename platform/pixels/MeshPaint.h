// Triangles anywhere in space, lit: what is to be painted, and where they are seen on a canvas.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/pixels/QuadPaint.h"
#include "platform/pixels/Surface.h"

namespace platform {

/// Column by column, as GL has them.
using Matrix4 = std::array<float, 16>;
using Vector3 = std::array<float, 3>;

inline constexpr Matrix4 kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

enum class MeshLightKind : uint8_t { Point, Directional, Spot };

/// Colours are red, green, blue: what a white surface gives back of the light.
struct MeshLight {
    MeshLightKind kind = MeshLightKind::Point;
    Vector3 place{};  ///< in the world; of a directional light: towards it, 0 straight onto each surface
    Vector3 ambient{}, diffuse{}, specular{};
    float shininess = 0;
    Vector3 coneDirection{};  ///< away from the light; 0: along -z
    float coneExponent = 0;   ///< fall-off to the edge
    float coneCosine = -1;    ///< of the angle between the middle of the cone and its edge
};

/// Three a triangle, eight numbers each: place, normal, place in the picture (0 to 1).
struct MeshCorners {
    static constexpr size_t kNumbers = 8;
    const float* numbers = nullptr;
    size_t count = 0;
};

/// Which sides of triangles are seen: those whose corners run counter-clockwise, clockwise, or both.
enum class MeshFacing : uint8_t { Front, Back, Any };

/// Triangles that share matrices, picture and lights. Corners and picture stay as they are until all is
/// painted.
struct MeshPaint {
    MeshCorners corners{};
    MeshFacing facing = MeshFacing::Any;
    Matrix4 toClip = kIdentity;   ///< to GL's clip coordinates
    Matrix4 toWorld = kIdentity;  ///< where the lights are
    Matrix4 normalToWorld = kIdentity;
    Matrix4 toPicture = kIdentity;  ///< moves places in the picture
    Surface picture{};              ///< without pixels: one colour, the tint
    bool premultiplied = true;      ///< the picture's colours are multiplied by its alpha
    Wrap wrap = Wrap::Clamp;
    std::array<float, 4> tint{1, 1, 1, 1};  ///< red, green, blue and alpha, 0 to 1, multiply the picture
    float opacity = 1;                      ///< 0 to 1
    bool isShape = false;                   ///< alpha is an opacity, as that of QuadPaint
    bool isOpaque =
        false;  ///< the picture's alpha is 1 wherever it is seen; so it is where `picture` is opaque
    BlendFunction blend;
    bool depthTest = false;           ///< what is not nearer than all that tested depths before is left out
    std::vector<MeshLight> lights{};  ///< none: colours stay as they are
    bool isSmooth = false;  ///< normals change within triangles: they are brought to length 1 everywhere
    Vector3 eye{};          ///< in the world
    Vector3 glow{};         ///< red, green, blue that are added to the lit colours
    Surface glowPicture{};  ///< multiplies them; without pixels they are the same everywhere
};

/// x to the power of an exponent, where x is not less than `least`.
struct MeshPower {
    float exponent = 0;
    bool isWhole = false;  ///< and small: some multiplications make it
    float least = 0;
};

/// A light with directions of length 1 and bounded numbers.
struct PreparedLight {
    MeshLight light;
    MeshPower cone, shine;
    bool isGlossy = false;
};

/// Right and bottom lie beyond it.
struct PixelBox {
    int left = 0, top = 0, right = 0, bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
};

/// A triangle, or a part of one that reached behind the eye: places in pixels from the upper left, depths
/// from 0 to 1.
struct SeenTriangle {
    Vector3 x, y, depth;
    uint32_t firstCorner;
    PixelBox box;  ///< pixels of the canvas with samples that may lie in it
};

/// Triangles that touch the rows of a tile, in the order in which they are painted.
struct PreparedMesh {
    size_t shapesBelow = 0;  ///< how many of the shapes of the picture are painted before
    MeshPaint paint;
    SentColours sent = SentColours::Straight;  ///< what opacity has done to colours for `blend`
    bool hides = false;                        ///< pixels under it show nothing of what was there
    std::vector<PreparedLight> lights;
    Vector3 ambient{};      ///< of all lights
    bool isGlossy = false;  ///< some light is
    std::vector<SeenTriangle> triangles;
    std::vector<uint32_t> bandEnds;       ///< of each band of kTileRows rows in `bandTriangles`
    std::vector<uint32_t> bandTriangles;  ///< by their places in `triangles`
};

/// Finds what is seen on a canvas of this size in pixels; false when nothing is. Keeps the memory of
/// `prepared`.
bool prepareMesh(const MeshPaint& paint, int width, int height, PreparedMesh& prepared);

}  // namespace platform
