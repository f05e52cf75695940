// The keys of the files themselves; the keys of nodes, clocks and components stand beside their classes.
#pragma once

#include "other/KeyTable.h"

namespace multiscene {

/// A scene file.
extern const KeyTable sceneFileKeys;
/// "TimeSource" of a scene file; its further keys depend on its "type".
extern const KeyTable timeSourceKeys;
/// A scene-group file.
extern const KeyTable sceneGroupFileKeys;
/// An entry of "scene" of a scene-group file, and of "sceneGroup" of a template.
extern const KeyTable sceneEntryKeys;
/// A template's own file, NAME/NAME.plist.
extern const KeyTable templateFileKeys;

}  // namespace multiscene
