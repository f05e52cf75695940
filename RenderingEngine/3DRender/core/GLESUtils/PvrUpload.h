// PVR files into textures.
#pragma once

#include "core/GLESUtils/GLObject.h"
#include "core/GLESUtils/PvrFile.h"

namespace multiscene {

/// Makes the texture and fills all its levels; compressed levels are decoded first. The texture stays bound.
/// Returns false, and makes nothing, when the file is rejected or larger than the driver's textures. The
/// colours are as the file holds them, not multiplied by alpha. Needs the context current.
bool uploadPvr(GLTexture& texture, const PvrFile& file);

}  // namespace multiscene
