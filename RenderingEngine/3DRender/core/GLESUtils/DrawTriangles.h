// The draw call of shapes that are more than one quad.
#pragma once

namespace multiscene {

/// Corners one behind the other in the caller's memory, `stride` bytes from one to the next.
struct TriangleCorners {
    const float* positions = nullptr;           ///< x, y, z
    const float* textureCoordinates = nullptr;  ///< u, v
    const float* normals = nullptr;             ///< x, y, z
    int stride = 0;
    int count = 0;  ///< three a triangle
};

/// The locations of a program's attributes; 0: the program does not take it.
struct TriangleAttributes {
    unsigned int position = 0, textureCoordinate = 0, normal = 0;
};

/// Draws the triangles with the current program. `cullBack`: those that face away are left out.
void drawTriangles(const TriangleAttributes& attributes, const TriangleCorners& corners, bool cullBack);

}  // namespace multiscene
