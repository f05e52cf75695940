#include "platform/net/HttpResponse.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "platform/base/Trim.h"

namespace platform {

namespace {

std::optional<uint64_t> number(std::string_view text) {
    uint64_t value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    return failure == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

/// "bytes 100-199/200".
void readRange(HttpResponse& response, std::string_view text) {
    const size_t dash = text.find('-'), slash = text.find('/');
    if (!text.starts_with("bytes ") || dash == std::string_view::npos || slash == std::string_view::npos)
        return;
    response.rangeStart = number(trimmed(text.substr(6, dash - 6)));
    response.rangeTotal = number(trimmed(text.substr(slash + 1)));
}

}  // namespace

void HttpResponse::readHeaderLine(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        *this = HttpResponse();
        const size_t space = line.find(' ');
        if (space != std::string_view::npos)
            status = static_cast<int>(number(line.substr(space + 1, 3)).value_or(0));
        return;
    }
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos) return;
    std::string name(line.substr(0, colon));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    const std::string_view value = trimmed(line.substr(colon + 1));
    if (name == "etag") etag = value;
    if (name == "last-modified") lastModified = value;
    if (name == "content-length") contentLength = number(value);
    if (name == "content-range") readRange(*this, value);
}

std::string HttpResponse::validator() const {
    // A weak tag only promises that the file means the same, not that its bytes are the same.
    return !etag.empty() && !etag.starts_with("W/") ? etag : lastModified;
}

bool HttpResponse::isOfSameVersion(const HttpResponse& other) const {
    if (!etag.empty() && !other.etag.empty()) return etag == other.etag;
    return lastModified.empty() || other.lastModified.empty() || lastModified == other.lastModified;
}

}  // namespace platform
