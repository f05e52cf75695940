#include "core/Material/TextureInfoKeys.h"

#include "core/Material/QVMaterialBase.h"

namespace multiscene {

constexpr KeyVariants materialVariants = variantsOfTypes<MaterialTypes>("texture", "textureType");

static constexpr Key textureInfoKeyList[] = {
    {.name = "textureType", .type = KeyType::Choice, .meaning = "what is shown", .required = true},
};
const KeyTable textureInfoKeys{"TextureInfo", "What a node shows.", nullptr, textureInfoKeyList,
                               &materialVariants};

std::string textureNameOf(const platform::Value& textureInfo) { return textureInfo.string("texture"); }

}  // namespace multiscene
