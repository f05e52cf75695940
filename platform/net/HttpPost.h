#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace platform {

struct HttpPost {
    std::string url, body;
    std::vector<std::pair<std::string, std::string>> headers;
    bool reachesPrivate = false;  ///< addresses that are not of the Internet, too (isPublicAddress)
    long mostSeconds = 10;
    std::function<bool()> isCancelled;  ///< asked several times a second
};

/// Sends it and returns the status of the answer, whose body nobody reads. Goes where the URL says and no
/// further: redirects are answers, and proxies are not asked. Blocks. Throws Error: Usage for what is no http
/// or https address, Input when it would reach what it may not, Transient when nobody answers, Cancelled.
int send(const HttpPost& post);

}  // namespace platform
