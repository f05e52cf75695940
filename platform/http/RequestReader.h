// One request out of the bytes of a connection: its head, then its body.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/http/HeadScan.h"
#include "platform/http/RequestHead.h"

namespace platform::http {

/// All that makes a request one that is not taken is found here: what could be read in two ways is refused.
/// Knows no sockets. One thread.
class RequestReader {
  public:
    explicit RequestReader(const Limits& limits);
    ~RequestReader();
    RequestReader(const RequestReader&) = delete;
    RequestReader& operator=(const RequestReader&) = delete;

    /// Bytes of the head; 0 while it is not whole. `bytes` begin as they did the last time. Throws Refusal.
    std::size_t headSize(std::string_view bytes) { return scan_.size(bytes); }
    /// Of exactly those bytes. Throws Refusal.
    RequestHead readHead(std::string_view bytes);

    /// To be called after readHead() when there is a body: where it goes, and how long it may be. Throws
    /// Refusal when it is announced as longer.
    void startBody(const RequestHead& head, uint64_t mostBytes, std::function<void(std::string_view)> sink);
    /// Takes from the front of `bytes` what belongs to the body and returns how many these were. The rest is
    /// to be given again, with more. Throws Refusal, and what the sink throws.
    std::size_t putBody(std::string_view bytes);
    bool isWhole() const;

  private:
    struct Parser;

    HeadScan scan_;
    std::unique_ptr<Parser> parser_;
};

}  // namespace platform::http
