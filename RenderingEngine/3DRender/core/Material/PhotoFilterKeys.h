#pragma once

#include "format/KeyTable.h"

namespace multiscene {

/// What any filter of a "filterImage" reads; "filterType" says which of it counts.
extern const KeyTable photoFilterKeys;
/// "filterType", and the keys of the filter that it names.
extern const KeyTable filterImageKeys;

}  // namespace multiscene
