// Where a point lies on a quad, and what that is in its picture. (0, 0) is the quad's upper left corner, (1,
// 1) its lower right one.
#pragma once

#include <array>
#include <glm/glm.hpp>

#include "painter/Draw.h"

namespace multiscene {

/// Of a quad's corners: bottom left, bottom right, top right, top left.
inline constexpr std::array<float, 8> cornerPlaces{0, 1, 1, 1, 1, 0, 0, 0};

/// From the place on the quad to the texture coordinates that belong to these of the corners.
glm::mat4 coordinatesFromPlace(const std::array<float, 8>& textureCoordinates);

/// Whether the first row in memory is the picture's lowest one, as in what was rendered.
inline bool isUpsideDown(const QuadDraw& quad) {
    return quad.textureCoordinates[1] < quad.textureCoordinates[7];
}

/// Width and height of a quad, and how many pixels of a canvas one of their units takes, about.
struct QuadMeasure {
    glm::vec2 size{1};
    float pixelsAUnit = 1;
};
QuadMeasure measured(const QuadDraw& quad, int canvasWidth, int canvasHeight);

/// Whether a corner's coordinates, moved by the texture matrix, lie beyond the picture.
bool leavesPicture(const glm::mat4& textureMatrix, const std::array<float, 8>& textureCoordinates);
inline bool leavesPicture(const QuadDraw& quad) {
    return leavesPicture(quad.textureMatrix, quad.textureCoordinates);
}

}  // namespace multiscene
