#pragma once

#include <glm/glm.hpp>

#include "format/KeyTable.h"

namespace multiscene {

extern const KeyTable lightMaterialKeys;

/// How a surface answers light: colours of 0 to 1, and the sharpness of its highlights.
struct LightMaterial {
    glm::vec3 ambientMaterialColor{0}, diffuseMaterialColor{0}, specularMaterialColor{0};
    float specularShininess = 0;

    /// Reads the keys of lightMaterialKeys.
    static LightMaterial materialWithDic(const platform::Value& info);
};

}  // namespace multiscene
