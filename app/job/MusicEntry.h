#pragma once

#include <string>

#include "app/job/RenderRequest.h"
#include "platform/base/Value.h"

namespace multiscene {

/// The audio entry (see SoundSink) of a group's music. `path`: absolute.
platform::Value musicEntry(const std::string& path, const MusicSettings& settings);

}  // namespace multiscene
