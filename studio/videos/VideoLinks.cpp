#include "studio/videos/VideoLinks.h"

#include <charconv>

#include "platform/crypto/Base64.h"
#include "platform/crypto/Hmac.h"
#include "platform/crypto/Secret.h"
#include "studio/store/KeyFile.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

VideoLinks::VideoLinks(const std::filesystem::path& keyFile) : key_(keyOf(keyFile)) {}

std::string VideoLinks::signature(std::string_view what) const {
    return platform::base64Url(platform::hmacSha256(key_, "GET video\n" + std::string(what)));
}

std::string VideoLinks::token(const std::string& video, int64_t expires) const {
    const std::string what = video + "." + std::to_string(expires / 1000);
    return what + "." + signature(what);
}

std::optional<std::string> VideoLinks::videoOf(std::string_view token, int64_t now) const {
    const size_t last = token.rfind('.'), first = token.find('.');
    if (last == std::string_view::npos || first == last) return std::nullopt;
    const std::string_view what = token.substr(0, last);
    if (!platform::sameSecret(signature(what), token.substr(last + 1))) return std::nullopt;
    int64_t expires = 0;
    std::from_chars(token.data() + first + 1, token.data() + last, expires);
    const std::string_view video = what.substr(0, first);
    return expires * 1000 > now && isName(video, "vid") ? std::optional(std::string(video)) : std::nullopt;
}

}  // namespace multiscene::studio
