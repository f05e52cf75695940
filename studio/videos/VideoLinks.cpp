#include "studio/videos/VideoLinks.h"

#include <sys/stat.h>

#include <charconv>

#include "platform/base/File.h"
#include "platform/crypto/Base64.h"
#include "platform/crypto/Hmac.h"
#include "platform/crypto/Secret.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

namespace {

constexpr size_t kKeyLetters = 52, kMostKey = 4096;

std::string readKey(const std::filesystem::path& file) {
    const auto bytes = platform::readFile(file, kMostKey);
    std::string key(bytes.begin(), bytes.end());
    if (key.size() < kKeyLetters)
        throw platform::Error(platform::ErrorKind::Failed, "is no key; remove it, and a new one is made",
                              file.string());
    return key;
}

}  // namespace

VideoLinks::VideoLinks(const std::filesystem::path& keyFile) {
    if (platform::isFile(keyFile)) {
        key_ = readKey(keyFile);
        return;
    }
    key_ = platform::randomLetters(kKeyLetters);
    platform::writeFileAtomically(keyFile, key_);
    ::chmod(keyFile.c_str(), 0600);
}

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
