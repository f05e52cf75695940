// Private to platform/mesh.
#pragma once

#include <span>

#include "platform/mesh/MeshFile.h"

namespace platform {

/// Whether the bytes begin as glTF does, in its binary form or as text.
bool looksLikeGltf(std::span<const uint8_t> bytes);
MeshFile readGltf(std::span<const uint8_t> bytes, const std::string& name, const OpenBeside& openBeside);

}  // namespace platform
