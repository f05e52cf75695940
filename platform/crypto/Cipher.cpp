#include "platform/crypto/Cipher.h"

#include <openssl/evp.h>

#include <memory>

#include "platform/base/Error.h"

namespace platform {

namespace {

constexpr size_t blockSize = 16;
using Digest = std::array<uint8_t, 32>;

struct FreeContext {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

Digest sha256(const void* bytes, size_t count) {
    Digest digest{};
    if (EVP_Digest(bytes, count, digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        throw Error(ErrorKind::Failed, "SHA-256 is not available");
    return digest;
}

Digest vectorOf(const std::vector<uint8_t>& plain, const CipherKey& key) {
    std::vector<uint8_t> keyed(key.begin(), key.end());
    keyed.insert(keyed.end(), plain.begin(), plain.end());
    return sha256(keyed.data(), keyed.size());
}

/// Appends the transformed bytes to `out`; false when the library refuses, as for wrong padding.
bool transform(bool encrypts, const CipherKey& key, const uint8_t* vector, const uint8_t* bytes, size_t count,
               std::vector<uint8_t>& out) {
    const Context context(EVP_CIPHER_CTX_new());
    const size_t start = out.size();
    out.resize(start + count + blockSize);
    int written = 0, last = 0;
    const bool done =
        context &&
        EVP_CipherInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, key.data(), vector, encrypts) == 1 &&
        EVP_CipherUpdate(context.get(), out.data() + start, &written, bytes, static_cast<int>(count)) == 1 &&
        EVP_CipherFinal_ex(context.get(), out.data() + start + written, &last) == 1;
    out.resize(done ? start + static_cast<size_t>(written + last) : start);
    return done;
}

}  // namespace

CipherKey cipherKeyFromText(std::string_view text) { return sha256(text.data(), text.size()); }

std::vector<uint8_t> encryptAES256(const std::vector<uint8_t>& plain, const CipherKey& key) {
    const Digest digest = vectorOf(plain, key);
    std::vector<uint8_t> stored(digest.begin(), digest.begin() + blockSize);
    if (!transform(true, key, digest.data(), plain.data(), plain.size(), stored))
        throw Error(ErrorKind::Failed, "AES-256 is not available");
    return stored;
}

std::optional<std::vector<uint8_t>> decryptAES256(const std::vector<uint8_t>& stored, const CipherKey& key) {
    if (stored.size() < 2 * blockSize || stored.size() % blockSize != 0) return std::nullopt;
    std::vector<uint8_t> plain;
    if (!transform(false, key, stored.data(), stored.data() + blockSize, stored.size() - blockSize, plain))
        return std::nullopt;
    return plain;
}

}  // namespace platform
