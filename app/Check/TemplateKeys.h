#pragma once

#include "other/KeyTable.h"

namespace multiscene {

/// A template's own file, NAME/NAME.plist. The keys of scene files stand beside the classes that read them.
extern const KeyTable templateFileKeys;

}  // namespace multiscene
