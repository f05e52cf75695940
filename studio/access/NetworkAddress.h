#pragma once

#include <string>
#include <vector>

namespace multiscene::studio {

/// The addresses that this machine has in networks, the likeliest to be reached first: IPv4 before IPv6,
/// which is in brackets. None when it has none.
std::vector<std::string> networkAddresses();
/// The machine's name; empty: it has none of use.
std::string hostName();

}  // namespace multiscene::studio
