#pragma once

#include <string>

#include "platform/http/RequestHead.h"

namespace multiscene::studio {

/// The value of the first cookie of that name; empty: there is none.
std::string cookieOf(const platform::http::RequestHead& head, const std::string& name);

}  // namespace multiscene::studio
