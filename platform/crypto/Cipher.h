// AES-256 in CBC mode with PKCS#7 padding; the initialisation vector is the first 16 bytes of what is stored.
// Keeps file contents from casual eyes; it does not tell whether somebody changed them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace platform {

using CipherKey = std::array<uint8_t, 32>;

/// The SHA-256 of the text.
CipherKey cipherKeyFromText(std::string_view text);

/// The same input gives the same output: the vector comes from key and content, so that files can be
/// reproduced. Throws Error(Failed) when the library refuses.
std::vector<uint8_t> encryptAES256(const std::vector<uint8_t>& plain, const CipherKey& key);

/// None when the bytes are no encryption under that key, as far as the padding tells.
std::optional<std::vector<uint8_t>> decryptAES256(const std::vector<uint8_t>& stored, const CipherKey& key);

}  // namespace platform
