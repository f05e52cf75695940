#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Value.h"

namespace multiscene::studio {

/// A finished video, as the database has it. Times are milliseconds since 1970.
struct Video {
    std::string id, job, session, title;
    int64_t templateId = 0;
    std::string templateTitle;
    int64_t bytes = 0;
    int64_t width = 0, height = 0, frames = 0;
    double seconds = 0;
    bool hasSound = false, isKept = false;
    int64_t created = 0, expires = 0;  ///< 0: never
};

/// As the API shows it.
platform::Value valueOf(const Video& video);

}  // namespace multiscene::studio
