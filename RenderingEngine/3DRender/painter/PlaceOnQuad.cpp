#include "painter/PlaceOnQuad.h"

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
