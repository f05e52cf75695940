#include "platform/crypto/Base64.h"

#include <openssl/evp.h>

#include <algorithm>

namespace platform {

std::string base64(std::string_view bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3), '\0');
    // One more is written, a NUL, where std::string has one.
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                    reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    return text;
}

std::string base64Url(std::string_view bytes) {
    std::string text = base64(bytes);
    text.erase(std::min(text.find('='), text.size()));
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    const int count =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (count != static_cast<int>(bytes.size())) return std::nullopt;
    const size_t end = text.find_last_not_of('=');
    bytes.resize(bytes.size() - (end == std::string_view::npos ? 0 : text.size() - end - 1));
    // Spaces around it and other spellings of the last bits are none.
    return base64(bytes) == text ? std::optional(bytes) : std::nullopt;
}

}  // namespace platform
