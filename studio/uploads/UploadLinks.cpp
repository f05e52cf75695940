#include "studio/uploads/UploadLinks.h"

#include <charconv>

#include "platform/crypto/Base64.h"
#include "platform/crypto/Hmac.h"
#include "platform/crypto/Secret.h"
#include "studio/store/KeyFile.h"

namespace multiscene::studio {

namespace {

/// Up to the next dot, which goes as well.
std::string_view takePart(std::string_view& rest) {
    const std::string_view part = rest.substr(0, rest.find('.'));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    return part;
}

template <typename Number>
Number numberOf(std::string_view text) {
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

UploadLinks::UploadLinks(const std::filesystem::path& keyFile) : key_(keyOf(keyFile)) {}

std::string UploadLinks::signature(std::string_view what) const {
    return platform::base64Url(platform::hmacSha256(key_, "PUT upload\n" + std::string(what)));
}

std::string UploadLinks::token(const Grant& grant) const {
    const std::string what = grant.session + "." + grant.upload + "." + std::to_string(grant.expires) + "." +
                             std::to_string(grant.mostBytes);
    return what + "." + signature(what);
}

std::optional<UploadLinks::Grant> UploadLinks::grantOf(std::string_view token, int64_t now) const {
    const size_t last = token.rfind('.');
    if (last == std::string_view::npos) return std::nullopt;
    std::string_view what = token.substr(0, last);
    if (!platform::sameSecret(signature(what), token.substr(last + 1))) return std::nullopt;
    Grant grant;
    grant.session = takePart(what);
    grant.upload = takePart(what);
    grant.expires = numberOf<int64_t>(takePart(what));
    grant.mostBytes = numberOf<uint64_t>(takePart(what));
    return grant.expires > now ? std::optional(grant) : std::nullopt;
}

}  // namespace multiscene::studio
