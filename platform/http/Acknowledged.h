#pragma once

#include <cstdint>

namespace platform::http {

/// Bytes that the other side of a TCP socket has taken so far: what the kernel has taken from us says little,
/// as it holds megabytes for a client that reads slowly. 0 when the kernel cannot tell.
uint64_t acknowledgedBytes(int socket);

/// Has the kernel give up a client that takes nothing for that long, and hold little that it has not sent.
void limitSocket(int socket, unsigned patienceMilliseconds);

}  // namespace platform::http
