#pragma once

#include <stop_token>
#include <thread>

#include "platform/base/File.h"

namespace multiscene::cli {

/// Turns Ctrl-C, SIGTERM and SIGHUP into a stop request. A second one ends the program at once, with exit
/// code 130 and the job's folder removed. Made before any other thread: the others inherit that the signals
/// are blocked. Throws platform::Error.
class SignalWatch {
  public:
    SignalWatch();
    ~SignalWatch();

    /// Requested by the first signal.
    std::stop_token stopToken() const { return stop_.get_token(); }

  private:
    void watch();

    std::stop_source stop_;
    platform::FileHandle signals_, ended_;  ///< readable when a signal has come, and when the watch is over
    std::thread thread_;
};

}  // namespace multiscene::cli
