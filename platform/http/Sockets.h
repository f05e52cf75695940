// Listening and connected sockets, plain or with TLS, without the headers of the library behind them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/http/Loop.h"

namespace platform::http {

/// A client's connection. The loop's thread. One read and one write may be under way at a time; what they
/// work on stays as it is until they call back, which they do once, later, with the bytes that were moved, or
/// 0 when the connection is over.
class Socket {
  public:
    using Moved = std::function<void(std::size_t bytes)>;

    virtual ~Socket() = default;
    /// TLS's own beginning; calls with 0 when it fails.
    virtual void start(Moved done) = 0;
    virtual void read(char* room, std::size_t size, Moved done) = 0;
    virtual void write(std::string_view bytes, Moved done) = 0;
    /// Tells the client that nothing more comes.
    virtual void finish(Moved done) = 0;
    /// What is under way calls back with 0.
    virtual void close() = 0;
    /// Bytes that the client has taken so far.
    virtual uint64_t acknowledged() = 0;
    /// The client's address without its port.
    virtual const std::string& peer() const = 0;
};

/// The files that TLS needs; none without it.
struct TlsFiles {
    std::string certificates;  ///< PEM, the server's own first
    std::string key;           ///< PEM

    bool isUsed() const { return !certificates.empty(); }
};

class Tls;

/// Throws Error naming the file at fault. Null when there is to be none.
std::shared_ptr<Tls> loadTls(const TlsFiles& files);

class Listener {
  public:
    using Accepted = std::function<void(std::unique_ptr<Socket>)>;

    virtual ~Listener() = default;
    /// The loop's thread.
    virtual void start(Accepted accepted) = 0;
    virtual void close() = 0;
    virtual uint16_t port() const = 0;
};

/// Throws Error naming address and port. `address` is an IPv4 or IPv6 address; "::" takes both.
std::unique_ptr<Listener> listenOn(const std::shared_ptr<Loop>& loop, const std::string& address,
                                   uint16_t port, std::shared_ptr<Tls> tls);

}  // namespace platform::http
