#include "platform/crypto/Secret.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/random.h>

#include <array>
#include <cerrno>
#include <vector>

#include "platform/base/Error.h"

namespace platform {

namespace {

std::vector<uint8_t> randomBytes(size_t count) {
    std::vector<uint8_t> bytes(count);
    for (size_t done = 0; done < count;) {
        const ssize_t got = ::getrandom(bytes.data() + done, count - done, 0);
        if (got < 0 && errno != EINTR) throw errnoError(errno, "the system gives no random numbers", "");
        if (got > 0) done += static_cast<size_t>(got);
    }
    return bytes;
}

}  // namespace

std::string randomLetters(size_t count) {
    static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz234567";
    std::string text;
    for (const uint8_t byte : randomBytes(count)) text += letters[byte % letters.size()];
    return text;
}

std::string randomDigits(size_t count) {
    std::string text;
    while (text.size() < count)
        for (const uint8_t byte : randomBytes(count))
            // The bytes above would make the low digits likelier.
            if (byte < 250 && text.size() < count) text += static_cast<char>('0' + byte % 10);
    return text;
}

std::string textDigest(std::string_view text) {
    std::array<uint8_t, EVP_MAX_MD_SIZE> digest{};
    unsigned count = 0;
    if (EVP_Digest(text.data(), text.size(), digest.data(), &count, EVP_sha256(), nullptr) != 1)
        throw Error(ErrorKind::Failed, "SHA-256 is not available");
    static constexpr const char* digits = "0123456789abcdef";
    std::string hexadecimal;
    for (unsigned index = 0; index < count; ++index)
        hexadecimal.append({digits[digest[index] >> 4], digits[digest[index] & 15]});
    return hexadecimal;
}

bool sameSecret(std::string_view one, std::string_view other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

}  // namespace platform
