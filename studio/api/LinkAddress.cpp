#include "studio/api/LinkAddress.h"

#include <vector>

#include "studio/access/NetworkAddress.h"

namespace multiscene::studio {

namespace {

bool isThisMachine(const std::string& host) {
    return host.starts_with("127.") || host.starts_with("localhost") || host.starts_with("[::1]");
}

}  // namespace

std::string linkAddress(const StudioSettings& settings, const platform::http::RequestHead& head,
                        const std::string& path) {
    const std::string scheme = head.isSecure ? "https://" : "http://";
    if (!settings.publicUrl.empty()) return settings.publicUrl + path;
    std::string host = head.host;
    const auto addresses =
        settings.isListening && isThisMachine(host) ? networkAddresses() : std::vector<std::string>();
    const size_t colon = host.rfind(':');
    if (!addresses.empty() && colon != std::string::npos) host = addresses.front() + host.substr(colon);
    return scheme + host + path;
}

}  // namespace multiscene::studio
