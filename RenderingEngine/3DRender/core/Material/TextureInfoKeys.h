#pragma once

#include "format/KeyTable.h"

namespace multiscene {

/// "TextureInfo": "textureType", and the keys of the material that it names.
extern const KeyTable textureInfoKeys;
/// The materials' own keys, by "textureType".
extern const KeyVariants materialVariants;

/// The materials that show what a scene, or a node, has drawn.
extern const KeyTable sceneTextureKeys, namedTargetKeys;

/// "texture", which the materials made of a file read.
constexpr Key textureFileKey(KeyFile file, std::string_view meaning) {
    return {.name = "texture",
            .type = KeyType::Text,
            .meaning = meaning,
            .lookup = KeyLookup::UserPath,
            .required = true,
            .file = file};
}
/// The "texture" of a dictionary; empty where there is none.
std::string textureNameOf(const platform::Value& textureInfo);

}  // namespace multiscene
