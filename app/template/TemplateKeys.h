#pragma once

#include "format/KeyTable.h"

namespace multiscene {

/// A template's own file, NAME/NAME.plist. The keys of scene files stand beside the classes that read them.
extern const KeyTable templateFileKeys;
/// One record of its "installScenes".
extern const KeyTable catalogueRecordKeys;
/// The "wechartTempletInfo" of a record.
extern const KeyTable templateDescriptionKeys;

/// A shader description that a template brings.
extern const KeyTable shaderFileKeys;

}  // namespace multiscene
