#include "core/QVObject3DLightAttributesModel.h"

namespace multiscene {

static constexpr Key lightAttributesKeyList[] = {
    {.name = "isEnableLight", .type = KeyType::Bool, .fallback = "0", .meaning = "the object is lit"},
    {.name = "lightSourceType",
     .type = KeyType::Integer,
     .fallback = "1",
     .meaning = "1 point, 2 directional, 3 spot",
     .minimum = 1,
     .maximum = 3},
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
const KeyTable lightAttributesKeys{"LightAttributes", "How one object takes light.", nullptr,
                                   lightAttributesKeyList};

QVObject3DLightAttributesModel QVObject3DLightAttributesModel::object3DLightAttributesModelWithDic(
    const platform::Value& info) {
    const KeyReader reader(lightAttributesKeys, info);
    return {reader.boolean("isEnableLight"),         reader.int32("lightSourceType"),
            reader.vector3("ambientMaterialColor"),  reader.vector3("diffuseMaterialColor"),
            reader.vector3("specularMaterialColor"), reader.number("specularShininess")};
}

}  // namespace multiscene
