#pragma once

#include <stop_token>
#include <thread>

namespace multiscene::cli {

/// Turns Ctrl-C, SIGTERM and SIGHUP into a stop request. A second one ends the program at once, with exit
/// code 130 and the job's folder removed. Made before any other thread: the others inherit that the signals
/// are blocked.
class SignalWatch {
  public:
    SignalWatch();

    /// Requested by the first signal.
    std::stop_token stopToken() const { return stop_.get_token(); }

  private:
    void watch(const std::stop_token& ended);

    std::stop_source stop_;
    std::jthread thread_;
};

}  // namespace multiscene::cli
