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
};
const KeyTable lightAttributesKeys{"LightAttributes", "How one object takes light.", &lightMaterialKeys,
                                   lightAttributesKeyList};

QVObject3DLightAttributesModel QVObject3DLightAttributesModel::object3DLightAttributesModelWithDic(
    const platform::Value& info) {
    const KeyReader reader(lightAttributesKeys, info);
    return {reader.boolean("isEnableLight"), reader.int32("lightSourceType"),
            LightMaterial::materialWithDic(info)};
}

}  // namespace multiscene
