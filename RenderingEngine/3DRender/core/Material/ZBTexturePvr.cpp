#include "core/Material/ZBTexture.h"

namespace multiscene {

// PVR files are not read yet: their textures stay 0 and are reported as unreadable.
void ZBTexture::loadTextureFromPvr(const std::string&) {}

}  // namespace multiscene
