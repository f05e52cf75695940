#pragma once

struct sockaddr;

namespace platform {

/// Whether an address belongs to the Internet: not to this machine, a network behind a router, a link, a
/// group, or to nobody. One of IPv6 that stands for one of IPv4 is what that is.
bool isPublicAddress(const sockaddr& address);

}  // namespace platform
