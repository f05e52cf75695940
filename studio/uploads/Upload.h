#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Value.h"

namespace multiscene::studio {

/// A photo, video or sound that somebody has sent. Times are milliseconds since 1970.
struct Upload {
    std::string id, session;
    std::string kind;  ///< "photo", "video", "sound"; empty: it is being looked at
    std::string name;  ///< as its owner calls it: a text, no path
    std::string file;  ///< of what is used, in the upload's folder
    int64_t bytes = 0;
    int64_t width = 0, height = 0, milliseconds = 0;  ///< upright; 0: it has none
    bool hasProxy = false;                            ///< proxy.jpg lies in its folder
    int64_t created = 0, expires = 0;
};

/// As the API shows it.
platform::Value valueOf(const Upload& upload);

}  // namespace multiscene::studio
