#include "painter/PlaceOnQuad.h"

#include <algorithm>

namespace multiscene {

glm::mat4 coordinatesFromPlace(const std::array<float, 8>& textureCoordinates) {
    const float left = textureCoordinates[0], bottom = textureCoordinates[1], right = textureCoordinates[4],
                top = textureCoordinates[5];
    glm::mat4 fromPlace(1);
    fromPlace[0][0] = right - left;
    fromPlace[1][1] = bottom - top;
    fromPlace[3] = {left, top, 0, 1};
    return fromPlace;
}

QuadMeasure measured(const QuadDraw& quad, int canvasWidth, int canvasHeight) {
    constexpr float least = 1e-6f;
    const glm::vec2 halfCanvas(static_cast<float>(canvasWidth) / 2, static_cast<float>(canvasHeight) / 2);
    const auto corner = [&](size_t i) {
        return glm::vec3(quad.corners[3 * i], quad.corners[3 * i + 1], quad.corners[3 * i + 2]);
    };
    const auto pixel = [&](size_t i) {
        const glm::vec4 clip = quad.mvpMatrix * glm::vec4(corner(i), 1);
        return glm::vec2(clip) / std::max(clip.w, least) * halfCanvas;
    };
    const auto both = [](const auto& at, size_t a, size_t b, size_t c, size_t d) {
        return (glm::length(at(a) - at(b)) + glm::length(at(c) - at(d))) / 2;
    };
    QuadMeasure result;
    result.size = glm::max(glm::vec2(both(corner, 0, 1, 3, 2), both(corner, 0, 3, 1, 2)), least);
    const glm::vec2 pixels(both(pixel, 0, 1, 3, 2), both(pixel, 0, 3, 1, 2));
    result.pixelsAUnit = (pixels.x / result.size.x + pixels.y / result.size.y) / 2;
    return result;
}

bool leavesPicture(const glm::mat4& textureMatrix, const std::array<float, 8>& textureCoordinates) {
    constexpr float rounding = 1e-4f;
    for (size_t corner = 0; corner < 4; ++corner) {
        const glm::vec2 at(textureMatrix * glm::vec4(textureCoordinates[2 * corner],
                                                     textureCoordinates[2 * corner + 1], 0, 1));
        if (glm::any(glm::lessThan(at, glm::vec2(-rounding))) ||
            glm::any(glm::greaterThan(at, glm::vec2(1 + rounding))))
            return true;
    }
    return false;
}

}  // namespace multiscene
