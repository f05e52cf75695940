#include "platform/crypto/Digest.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <vector>

#include "platform/base/File.h"

namespace platform {

namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

std::string hexadecimal(const std::array<uint8_t, EVP_MAX_MD_SIZE>& bytes, unsigned count) {
    static constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (unsigned index = 0; index < count; ++index)
        text.append({digits[bytes[index] >> 4], digits[bytes[index] & 15]});
    return text;
}

}  // namespace

std::string fileDigest(const std::filesystem::path& file) {
    const FileHandle handle = openFile(file, O_RDONLY);
    if (!handle) throw errnoError(errno, "cannot open", file.string());
    const std::unique_ptr<EVP_MD_CTX, FreeContext> context(EVP_MD_CTX_new());
    bool works = context && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
    std::vector<uint8_t> buffer(1 << 20);
    uint64_t done = 0;
    for (int64_t count = 1; works && count != 0; done += static_cast<uint64_t>(count)) {
        count = readAt(handle, buffer.data(), buffer.size(), done);
        if (count < 0) throw errnoError(errno, "cannot read", file.string());
        works = EVP_DigestUpdate(context.get(), buffer.data(), static_cast<size_t>(count)) == 1;
    }
    std::array<uint8_t, EVP_MAX_MD_SIZE> digest{};
    unsigned bytes = 0;
    if (!works || EVP_DigestFinal_ex(context.get(), digest.data(), &bytes) != 1)
        throw Error(ErrorKind::Failed, "SHA-256 is not available");
    return hexadecimal(digest, bytes);
}

}  // namespace platform
