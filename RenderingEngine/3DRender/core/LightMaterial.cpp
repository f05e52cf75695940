#include "core/LightMaterial.h"

namespace multiscene {

static constexpr Key lightMaterialKeyList[] = {
    {.name = "ambientMaterialColor",
     .type = KeyType::Vector3,
     .fallback = "0,0,0",
     .meaning = "ambient colour"},
    {.name = "diffuseMaterialColor",
     .type = KeyType::Vector3,
     .fallback = "0,0,0",
     .meaning = "diffuse colour"},
    {.name = "specularMaterialColor",
     .type = KeyType::Vector3,
     .fallback = "0,0,0",
     .meaning = "specular colour"},
    {.name = "specularShininess",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "sharpness of highlights",
     .minimum = 0},
};
const KeyTable lightMaterialKeys{"LightMaterial", "How a surface answers light.", nullptr,
                                 lightMaterialKeyList};

LightMaterial LightMaterial::materialWithDic(const platform::Value& info) {
    const KeyReader reader(lightMaterialKeys, info);
    return {reader.vector3("ambientMaterialColor"), reader.vector3("diffuseMaterialColor"),
            reader.vector3("specularMaterialColor"), reader.number("specularShininess")};
}

}  // namespace multiscene
