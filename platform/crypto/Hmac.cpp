#include "platform/crypto/Hmac.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include "platform/base/Error.h"

namespace platform {

std::string hmacSha256(std::string_view key, std::string_view text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned count = 0;
    if (!HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()),
              reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest, &count))
        throw Error(ErrorKind::Failed, "HMAC is not available");
    return {reinterpret_cast<const char*>(digest), count};
}

}  // namespace platform
