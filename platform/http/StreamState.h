#pragma once

#include <atomic>
#include <memory>

#include "platform/http/EventStream.h"
#include "platform/http/Loop.h"
#include "platform/http/OnceCall.h"

namespace platform::http {

class Connection;

/// Between the copies of an EventStream and its connection.
class StreamState {
  public:
    StreamState(std::shared_ptr<Loop> loop, std::weak_ptr<Connection> connection, std::size_t mostBytes)
        : loop_(std::move(loop)), connection_(std::move(connection)), mostBytes_(mostBytes) {}

    /// Any thread.
    bool send(const Event& event);
    void close();
    bool isOpen() const { return !closed_.hasHappened() && !connection_.expired(); }
    void onClosed(std::function<void()> call) { closed_.setCall(std::move(call)); }

    /// The server's thread: so many bytes have gone out; the stream has ended.
    void sent(std::size_t bytes) { waiting_ -= bytes; }
    void ended() { closed_.happen(); }

  private:
    std::shared_ptr<Loop> loop_;
    std::weak_ptr<Connection> connection_;
    const std::size_t mostBytes_;
    std::atomic<std::size_t> waiting_{0};  ///< bytes that the client has not taken
    OnceCall closed_;
};

}  // namespace platform::http
