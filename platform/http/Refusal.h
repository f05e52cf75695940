#pragma once

#include <stdexcept>

namespace platform::http {

/// A request that is not taken: it is answered with the status, and the connection ends.
struct Refusal : std::runtime_error {
    Refusal(int statusCode, const char* reason) : std::runtime_error(reason), status(statusCode) {}
    int status;
};

}  // namespace platform::http
