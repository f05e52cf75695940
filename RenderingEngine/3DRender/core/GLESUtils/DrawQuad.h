// The draw call that every quad, the video sources and the exporter share.
#pragma once

namespace multiscene {

/// The corners of a quad: bottom left, bottom right, top right, top left. Points into the caller's memory.
struct QuadCorners {
    const float* positions = nullptr;           ///< 4 times x, y, z
    const float* textureCoordinates = nullptr;  ///< 4 times u, v; none for a quad of one colour
};

/// Draws the corners as a triangle fan with the current program, whose attributes are at the given locations.
/// Location 0 means that the program does not take the attribute.
void drawQuadFan(unsigned int positionAttribute, unsigned int textureCoordinateAttribute,
                 const QuadCorners& corners);

}  // namespace multiscene
