// The keys of the scene file and of the scene-group file.
#pragma once

#include "format/KeyTable.h"

namespace multiscene {

extern const KeyTable sceneFileKeys;       ///< "Camera", "LightSourceArray", "TimeSource", "object3D"
extern const KeyTable sceneGroupFileKeys;  ///< "scene", "userMediaMap", "sceneGroupFpsTotal"
extern const KeyTable sceneEntryKeys;      ///< one entry of "scene"
extern const KeyTable sceneTansitionsInfoKeys;

}  // namespace multiscene
