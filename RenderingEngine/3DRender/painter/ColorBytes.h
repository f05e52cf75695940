#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <glm/glm.hpp>

namespace multiscene {

/// A colour with parts from 0 to 1 as a texel. Parts beyond are cut; what is not a number is 0.
inline std::array<uint8_t, 4> colorBytes(const glm::vec4& color) {
    std::array<uint8_t, 4> bytes{};
    for (int part = 0; part < 4; ++part)
        bytes[static_cast<size_t>(part)] =
            static_cast<uint8_t>(std::min(std::max(0.0f, color[part]), 1.0f) * 255 + 0.5f);
    return bytes;
}

}  // namespace multiscene
