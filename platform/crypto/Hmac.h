#pragma once

#include <string>
#include <string_view>

namespace platform {

/// HMAC with SHA-256: 32 bytes that only who has the key can make of the text. Any thread. Throws Error.
std::string hmacSha256(std::string_view key, std::string_view text);

}  // namespace platform
