#pragma once

#include <optional>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace multiscene {

/// What a scene file holds more of than platform::Limits allow, as Error(Template) that names `file` and the
/// key at which the limit is passed. To be asked before the scene is judged or built. Any thread.
std::optional<platform::Error> sceneBeyondLimits(const platform::Value& scene, const std::string& file);

}  // namespace multiscene
