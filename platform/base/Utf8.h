// What is and is not UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// Bytes of the well-formed character at the start of `text`, 1 to 4; 0 when there is none.
size_t utf8CharacterLength(std::string_view text);

/// Where the first byte lies that belongs to no character; npos when the whole text is UTF-8.
size_t firstInvalidUtf8(std::string_view text);

}  // namespace platform
