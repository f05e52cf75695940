#pragma once

#include <string>

#include "platform/http/RequestHead.h"
#include "studio/StudioSettings.h"

namespace multiscene::studio {

/// Where others find a path of the studio, "/s/…", that a request was answered with: not at this machine's
/// address for itself, where there is another.
std::string linkAddress(const StudioSettings& settings, const platform::http::RequestHead& head,
                        const std::string& path);

}  // namespace multiscene::studio
