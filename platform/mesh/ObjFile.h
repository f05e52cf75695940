// Private to platform/mesh.
#pragma once

#include <span>

#include "platform/mesh/MeshFile.h"

namespace platform {

/// A Wavefront file of any text: lines that mean nothing here are passed over.
MeshFile readObj(std::span<const uint8_t> bytes, const std::string& name, const OpenBeside& openBeside);

}  // namespace platform
