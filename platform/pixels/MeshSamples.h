// Private to platform/pixels: what is seen of triangles in a tile, at four places of each pixel.
//
// A sample's key is its depth in the upper 16 bits and, in the lower ones, the number of the triangle that is
// seen there and has not been shaded yet, or 0. Of two keys the smaller one is seen: the nearer triangle, of
// equally near ones the first.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "platform/pixels/MeshPaint.h"
#include "platform/pixels/TilePaint.h"

namespace platform {

inline constexpr int kSamples = 4;
/// Where they lie, from a pixel's middle; each in a row and a column of its own.
inline constexpr float kSampleX[kSamples] = {-0.125f, 0.375f, -0.375f, 0.125f};
inline constexpr float kSampleY[kSamples] = {-0.375f, -0.125f, 0.125f, 0.375f};
inline constexpr float kSampleReach = 0.375f;

/// Positive where the corners run clockwise on the canvas.
double twiceArea(const SeenTriangle& seen);

/// Numbers of a triangle that change evenly over the canvas, once divided by w: 1, place in the world,
/// normal, texel. At pixel (column, row) first + down * (row - top) + across * (column - left).
struct TrianglePlanes {
    static constexpr int kCount = 12;  // of them 9 are used
    float first[kCount], across[kCount], down[kCount];
    int left, top;
};

/// A triangle's sample in the tile that is to be shaded: some of a pixel's four.
struct Fragment {
    uint16_t triangle;  ///< its number
    uint16_t column;    ///< in the tile
    uint8_t row;
    uint8_t samples;  ///< a bit each
};

/// A tile's memory, used again and again.
struct MeshSamples {
    static constexpr int kBeyond = 32;  // columns: vectors reach beyond a row
    static constexpr int kStride = kTileColumns + kBeyond;
    static constexpr uint32_t kFarthest = 0xFFFF0000, kNumber = 0xFFFF, kNoPlanes = 0xFFFFFFFF;

    struct Triangle {
        const PreparedMesh* mesh = nullptr;
        const SeenTriangle* seen = nullptr;
        uint32_t meshNumber = 0;
        uint32_t planes = kNoPlanes;  ///< place in `planes`
    };

    TileArea area{};
    Canvas canvas;
    std::vector<uint32_t> keys;       ///< rows of the four samples
    std::vector<Triangle> triangles;  ///< by their numbers; the first is none
    std::vector<TrianglePlanes> planes;
    uint32_t meshes = 0;
    /// Pixels whose samples have colours of their own, as long as meshes are blended with them, and the
    /// colours.
    std::vector<uint8_t> isSplit;
    std::vector<std::array<uint32_t, kSamples>> splitColours;
    bool hasSplit = false;                          ///< some pixel may be
    PixelBox pending{};                             ///< in the tile: where something may not be shaded yet
    static constexpr size_t kMostFragments = 4096;  // that are shaded together
    std::vector<Fragment> fragments;                ///< that are not shaded yet
    struct {
        std::vector<uint32_t> order, ends, colours, backs;
        std::vector<std::array<uint32_t, kSamples>> blended;
    } scratch;  ///< for fragments

    uint32_t* keysOf(int row, int sample) {
        return &keys[static_cast<size_t>((row * kSamples + sample) * kStride)];
    }
    static size_t pixelAt(int row, int column) { return static_cast<size_t>(row * kStride + column); }
    /// Of a triangle of which something is seen.
    const TrianglePlanes& planesOf(uint32_t number) {
        const uint32_t place = triangles[number].planes;
        return place != kNoPlanes ? planes[place] : makePlanes(number);
    }
    const TrianglePlanes& makePlanes(uint32_t number);
    void include(const PixelBox& box) {
        if (pending.isEmpty()) pending = box;
        pending = {std::min(pending.left, box.left), std::min(pending.top, box.top),
                   std::max(pending.right, box.right), std::max(pending.bottom, box.bottom)};
    }
};

/// For a tile of which nothing is seen so far.
void beginSamples(const TileArea& area, const Canvas& canvas, MeshSamples& samples);
/// Finds what is seen of the mesh; what it hides is never shaded. Canvas pixels may change that the mesh is
/// blended with.
void addMesh(const PreparedMesh& mesh, MeshSamples& samples);
/// Brings what is seen in a part of the tile, in the canvas's pixels, onto the canvas. Depths stay.
void settleSamples(const TileArea& part, MeshSamples& samples);
/// What is not on the canvas yet will not get there: all is hidden. Depths stay.
void forgetPending(MeshSamples& samples);

}  // namespace platform
