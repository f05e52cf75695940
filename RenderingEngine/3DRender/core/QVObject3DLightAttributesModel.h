#pragma once

#include <glm/glm.hpp>
#include <string>

#include "other/KeyTable.h"

namespace multiscene {

extern const KeyTable lightAttributesKeys;

/// How one object takes light: its own switch and material.
struct QVObject3DLightAttributesModel {
    bool isEnableLight = false;
    int32_t lightSourceType = 1;
    glm::vec3 ambientMaterialColor{0}, diffuseMaterialColor{0}, specularMaterialColor{0};
    float specularShininess = 0;

    static QVObject3DLightAttributesModel object3DLightAttributesModelWithDic(const platform::Value& info);
};

}  // namespace multiscene
