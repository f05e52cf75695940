#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace platform::http {

/// What the server's one thread does, in order.
class Loop {
  public:
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /// Any thread. Work that is left when the loop ends is forgotten.
    void post(std::function<void()> work);
    /// At once when this is the loop's thread.
    void dispatch(std::function<void()> work);
    /// The loop's thread, or before it runs.
    void after(std::chrono::milliseconds delay, std::function<void()> work);

    /// Until stop(). What is thrown by the work is logged.
    void run();
    /// Any thread.
    void stop();
    /// Does what is left to do at once, when the thread has ended: closed sockets are heard of.
    void drain();

    struct Core;
    Core& core() { return *core_; }

  private:
    std::unique_ptr<Core> core_;
};

}  // namespace platform::http
