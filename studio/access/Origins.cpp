#include "studio/access/Origins.h"

namespace multiscene::studio {

using platform::http::RequestHead;
using platform::http::sameToken;

bool Origins::isSecure(const RequestHead& head) const {
    return head.isSecure || sameToken(publicUrl_, "https://" + head.host);
}

std::string Origins::origin(const RequestHead& head) const {
    return (isSecure(head) ? "https://" : "http://") + head.host;
}

/// A browser that says neither is none, or follows a link.
bool Origins::isForeign(const RequestHead& head) const {
    const std::string given = head.header("Origin"), site = head.header("Sec-Fetch-Site");
    if (!given.empty() && !sameToken(given, origin(head))) return true;
    return !site.empty() && site != "same-origin" && site != "none";
}

bool isLoopback(const std::string& address) {
    return address == "::1" || address.starts_with("127.") || address.starts_with("::ffff:127.");
}

}  // namespace multiscene::studio
