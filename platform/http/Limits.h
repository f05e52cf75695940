#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace platform::http {

/// What a client may take of a server. What is beyond them is answered or closed, and never waited for.
struct Limits {
    std::size_t headBytes = 16 << 10;   ///< a request line and its header lines; more is a 431
    std::size_t targetBytes = 8 << 10;  ///< a request line; more is a 414
    std::size_t headerLines = 100;
    std::chrono::milliseconds headTime{10'000};   ///< from the first byte (or the connection) to a whole head
    std::chrono::milliseconds keepAlive{30'000};  ///< without a request

    /// Whoever sends a body or takes an answer moves `rate` bytes a second on average of each `rateSpan`,
    /// or is closed. So is a player that has paused: it comes back with a range.
    uint64_t rate = 1024;
    std::chrono::milliseconds rateSpan{5'000};

    /// Beyond these the connection goes that has waited longest without a request, else the new one.
    std::size_t connections = 512;
    std::size_t connectionsPerAddress = 256;  ///< of an IPv6 address: of its /64

    std::size_t readAhead = 64 << 10;  ///< bytes of requests that wait for the answer before them

    std::size_t streams = 256;             ///< event streams; one more is a 503
    std::size_t streamBytes = 256 << 10;   ///< a stream ends whose client has so many still to take
    std::chrono::seconds streamPulse{15};  ///< a stream that is silent so long is sent a comment

    /// How long, and how many bytes, a refused client may go on sending, so that it comes to read why.
    std::chrono::milliseconds lingerTime{2'000};
    std::size_t lingerBytes = 4 << 20;
};

}  // namespace platform::http
