// Secrets that nobody guesses, and what may be kept of them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// That many letters and digits (a-z, 2-7), 5 bits of chance each. Throws Error when the system gives none.
std::string randomLetters(size_t count);
/// So many decimal digits.
std::string randomDigits(size_t count);

/// SHA-256 of a text, as 64 hexadecimal digits. Throws Error.
std::string textDigest(std::string_view text);

/// Takes the same time wherever two texts of one length differ.
bool sameSecret(std::string_view one, std::string_view other);

}  // namespace platform
