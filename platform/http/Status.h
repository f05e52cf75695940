#pragma once

#include <string_view>

namespace platform::http {

/// "Not Found"; for a status that is not known, what its hundreds say.
std::string_view statusText(int status);

}  // namespace platform::http
