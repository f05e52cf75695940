#pragma once

#include "other/KeyTable.h"

namespace multiscene {

/// "TextureInfo": the keys of all materials; "textureType" says which of them count.
extern const KeyTable textureInfoKeys;

}  // namespace multiscene
