#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// As in RFC 4648, with padding.
std::string base64(std::string_view bytes);
/// The alphabet that needs no escapes in a URL, without padding.
std::string base64Url(std::string_view bytes);
/// What base64() gave; none for anything else.
std::optional<std::string> fromBase64(std::string_view text);

}  // namespace platform
