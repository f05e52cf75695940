#include "platform/net/PublicAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

struct Network {
    const char* address;
    unsigned bits;
};

/// Of the registries of special addresses.
constexpr Network kPrivate4[] = {
    {"0.0.0.0", 8},       {"10.0.0.0", 8},     {"100.64.0.0", 10}, {"127.0.0.0", 8},    {"169.254.0.0", 16},
    {"172.16.0.0", 12},   {"192.0.0.0", 24},   {"192.0.2.0", 24},  {"192.168.0.0", 16}, {"198.18.0.0", 15},
    {"198.51.100.0", 24}, {"203.0.113.0", 24}, {"224.0.0.0", 3}};
/// What of 2000::/3, the only addresses of IPv6 that are given to anybody, is not the Internet.
constexpr Network kPrivate6[] = {{"2001::", 23}, {"2001:db8::", 32}, {"2002::", 16}};
constexpr Network kGiven6 = {"2000::", 3};
constexpr Network kAs4[] = {{"::ffff:0:0", 96}, {"64:ff9b::", 96}};

template <size_t Size>
bool isWithin(const std::array<uint8_t, Size>& bytes, const Network& network) {
    std::array<uint8_t, Size> first{};
    ::inet_pton(Size == 4 ? AF_INET : AF_INET6, network.address, first.data());
    for (unsigned bit = 0; bit < network.bits; ++bit)
        if (((bytes[bit / 8] ^ first[bit / 8]) >> (7 - bit % 8)) & 1) return false;
    return true;
}

template <size_t Size, size_t Count>
bool isWithinAny(const std::array<uint8_t, Size>& bytes, const Network (&networks)[Count]) {
    return std::any_of(std::begin(networks), std::end(networks),
                       [&](const Network& network) { return isWithin(bytes, network); });
}

}  // namespace

bool isPublicAddress(const sockaddr& address) {
    std::array<uint8_t, 4> four{};
    std::array<uint8_t, 16> six{};
    if (address.sa_family == AF_INET) {
        std::memcpy(four.data(), &reinterpret_cast<const sockaddr_in&>(address).sin_addr, four.size());
        return !isWithinAny(four, kPrivate4);
    }
    if (address.sa_family != AF_INET6) return false;
    std::memcpy(six.data(), &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr, six.size());
    if (isWithinAny(six, kAs4)) {
        std::copy(six.end() - 4, six.end(), four.begin());
        return !isWithinAny(four, kPrivate4);
    }
    return isWithin(six, kGiven6) && !isWithinAny(six, kPrivate6);
}

}  // namespace platform
