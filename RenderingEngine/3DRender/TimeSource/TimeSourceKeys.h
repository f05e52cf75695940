#pragma once

#include "format/KeyTable.h"

namespace multiscene {

/// The video of a time source and its rate; a mask source has a second video.
extern const KeyTable videoInfoKeys;
extern const KeyTable maskVideoInfoKeys;

}  // namespace multiscene
