// What is and is not UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// Where the first byte lies that belongs to no character; npos when the whole text is UTF-8.
size_t firstInvalidUtf8(std::string_view text);

}  // namespace platform
