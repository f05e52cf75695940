// An HTTP/1.1 server for a page and an API: strict about what it takes, and deaf to who is slow.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/http/Handler.h"
#include "platform/http/Limits.h"

namespace platform::http {

struct ServerOptions {
    /// IPv4 or IPv6 addresses, not names; "::" takes both.
    std::vector<std::string> addresses = {"127.0.0.1"};
    uint16_t port = 0;  ///< 0: any
    /// What a request may call the server, or it is a 403: a page of somebody else's that was made to point
    /// here by its name. With our port, or with the one that is given here ("example.org:443", which browsers
    /// leave out).
    std::vector<std::string> hosts = {"127.0.0.1", "[::1]", "localhost"};
    /// PEM files of a certificate with those above it, and of its key: TLS 1.2 or later. Empty: without.
    std::string certificateFile, keyFile;
    Limits limits;
};

struct ServerCounts {
    std::size_t connections = 0, streams = 0;  ///< now
    uint64_t requests = 0, refusals = 0;       ///< so far: handed to the handler; not taken
};

/// Listens while it lives, in a thread of its own.
class Server {
  public:
    /// `handler` outlives the server. Throws Error: Failed when a port is taken or a certificate is of no
    /// use, Usage for what is no address.
    Server(ServerOptions options, Handler& handler);
    /// stop() without patience.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    uint16_t port() const;
    /// Any thread.
    ServerCounts counts() const;

    /// Takes no further connection, ends event streams, refuses requests whose body is still to come (503),
    /// and waits for what runs, no longer than that; what runs still is cut. What was uploaded is removed.
    /// Afterwards the handler is not called any more. Not from the handler.
    void stop(std::chrono::milliseconds patience);

  private:
    struct Core;
    std::unique_ptr<Core> core_;
};

}  // namespace platform::http
