#pragma once

#include <filesystem>
#include <string>

#include "platform/http/Answer.h"

namespace multiscene::studio {

/// A picture or a video of a template's folder, as an answer of a fixed type: JPEG, PNG or MP4 by its first
/// bytes, and never anything that lies elsewhere, whatever links lead there. Throws Problem (404) for
/// anything else.
platform::http::Answer pictureIn(const std::filesystem::path& folder, const std::string& name);
platform::http::Answer videoIn(const std::filesystem::path& folder, const std::string& name);

}  // namespace multiscene::studio
