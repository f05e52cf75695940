#pragma once

#include "format/KeyTable.h"

namespace multiscene {

/// One item of a "TransformArray".
extern const KeyTable transformItemKeys;
/// One item of a "MutableTransformArray".
extern const KeyTable mutableItemKeys;
/// What such an item reads by its "transformType".
extern const KeyTable mutableTranslateKeys, mutableScaleKeys, mutableRotateKeys;

}  // namespace multiscene
