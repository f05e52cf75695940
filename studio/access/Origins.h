#pragma once

#include <string>

#include "platform/http/RequestHead.h"

namespace multiscene::studio {

/// Whether a browser sends a request for a page of somebody else's. What a request calls the server was
/// judged before (ServerOptions::hosts), so whoever calls it by another origin is foreign.
class Origins {
  public:
    /// `publicUrl`: what the studio is called from outside, by whoever does TLS before it; empty: nothing.
    explicit Origins(const std::string& publicUrl) : publicUrl_(publicUrl) {}

    bool isForeign(const platform::http::RequestHead& head) const;
    /// Whether what is said stays between browser and studio, or whoever stands for it.
    bool isSecure(const platform::http::RequestHead& head) const;
    /// "http://127.0.0.1:8484": what the request called the studio.
    std::string origin(const platform::http::RequestHead& head) const;

  private:
    std::string publicUrl_;
};

/// Whether the address is one of this machine to itself.
bool isLoopback(const std::string& address);

}  // namespace multiscene::studio
