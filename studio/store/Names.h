// Names and times as the studio writes them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace multiscene::studio {

/// "job" -> "job_" and 26 letters and digits that nobody can guess. Any thread. Throws platform::Error.
std::string newName(std::string_view prefix);
/// Whether a text could be what newName() gave: a name becomes part of a path only when it is.
bool isName(std::string_view text, std::string_view prefix);

/// Milliseconds since 1970.
int64_t nowMs();
/// RFC 3339, UTC, with milliseconds.
std::string timeText(int64_t ms);

}  // namespace multiscene::studio
