#include "studio/access/NetworkAddress.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <unistd.h>

#include <array>
#include <memory>

namespace multiscene::studio {

namespace {

/// Empty: one of another kind.
std::string textOf(const sockaddr& address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.sa_family == AF_INET) {
        const auto& four = reinterpret_cast<const sockaddr_in&>(address);
        return ::inet_ntop(AF_INET, &four.sin_addr, text.data(), text.size()) ? text.data() : "";
    }
    if (address.sa_family != AF_INET6) return {};
    const auto& six = reinterpret_cast<const sockaddr_in6&>(address);
    if (IN6_IS_ADDR_LINKLOCAL(&six.sin6_addr)) return {};
    return ::inet_ntop(AF_INET6, &six.sin6_addr, text.data(), text.size())
               ? "[" + std::string(text.data()) + "]"
               : "";
}

}  // namespace

std::vector<std::string> networkAddresses() {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) return {};
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> all(first, ::freeifaddrs);
    std::vector<std::string> fours, sixes;
    for (const ifaddrs* each = first; each; each = each->ifa_next) {
        if (!each->ifa_addr || (each->ifa_flags & IFF_LOOPBACK) || !(each->ifa_flags & IFF_UP)) continue;
        std::string text = textOf(*each->ifa_addr);
        if (!text.empty()) (text.front() == '[' ? sixes : fours).push_back(std::move(text));
    }
    fours.insert(fours.end(), sixes.begin(), sixes.end());
    return fours;
}

std::string hostName() {
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0) return {};
    const std::string text = name.data();
    const bool isName =
        text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.") ==
        std::string::npos;
    return isName ? text : std::string();
}

}  // namespace multiscene::studio
