#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include "platform/base/DispatchQueue.h"

namespace multiscene::studio {

/// What the studio's queue is to do later, by a clock that never jumps. Any thread.
class Timers {
  public:
    /// `queue` outlives the timers.
    explicit Timers(platform::DispatchQueue& queue);
    ~Timers() { stop(); }
    Timers(const Timers&) = delete;
    Timers& operator=(const Timers&) = delete;

    void after(std::chrono::milliseconds delay, std::function<void()> task);
    /// Nothing becomes due any more.
    void stop();

  private:
    using Time = std::chrono::steady_clock::time_point;

    void run();

    platform::DispatchQueue& queue_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<Time, std::function<void()>> tasks_;
    bool isStopping_ = false;
    std::thread thread_;  // last: it needs the others
};

}  // namespace multiscene::studio
