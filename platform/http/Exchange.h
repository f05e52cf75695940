#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "platform/http/Answer.h"
#include "platform/http/EventStream.h"
#include "platform/http/Loop.h"
#include "platform/http/OnceCall.h"

namespace platform::http {

class Connection;

/// Between a Responder and the connection that waits for its answer. Any thread.
class Exchange {
  public:
    Exchange(std::shared_ptr<Loop> loop, std::weak_ptr<Connection> connection, std::size_t streamBytes)
        : loop_(std::move(loop)), connection_(std::move(connection)), streamBytes_(streamBytes) {}

    void answer(Answer answer);
    EventStream stream();
    /// Answers, when nothing else did, that something went wrong.
    void fail();
    bool isGone() const { return gone_.hasHappened(); }
    void onGone(std::function<void()> call);

    /// The server's thread: nobody waits any more.
    void clientHasGone() { gone_.happen(); }

  private:
    bool claim() { return !isClaimed_.exchange(true); }

    std::shared_ptr<Loop> loop_;
    std::weak_ptr<Connection> connection_;
    const std::size_t streamBytes_;
    std::atomic<bool> isClaimed_{false};
    OnceCall gone_;
};

}  // namespace platform::http
