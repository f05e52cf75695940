#pragma once

#include "core/LightMaterial.h"

namespace multiscene {

extern const KeyTable lightAttributesKeys;

/// How one object takes light: its own switch and material.
struct QVObject3DLightAttributesModel {
    bool isEnableLight = false;
    int32_t lightSourceType = 1;
    LightMaterial material;

    static QVObject3DLightAttributesModel object3DLightAttributesModelWithDic(const platform::Value& info);
};

}  // namespace multiscene
