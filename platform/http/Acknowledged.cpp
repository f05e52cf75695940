#include "platform/http/Acknowledged.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstddef>

namespace platform::http {

uint64_t acknowledgedBytes(int socket) {
    tcp_info info{};
    socklen_t size = sizeof info;
    if (::getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return 0;
    return size >= offsetof(tcp_info, tcpi_bytes_acked) + sizeof info.tcpi_bytes_acked ? info.tcpi_bytes_acked
                                                                                       : 0;
}

void limitSocket(int socket, unsigned patienceMilliseconds) {
    const int mostUnsent = 128 << 10;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NOTSENT_LOWAT, &mostUnsent, sizeof mostUnsent);
    ::setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &patienceMilliseconds, sizeof patienceMilliseconds);
    const int at_once = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
}

}  // namespace platform::http
