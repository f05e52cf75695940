#pragma once

#include "platform/base/File.h"

namespace multiscene::cli {

/// SIGINT, SIGTERM, SIGHUP and SIGTSTP, held back from now on and read from a descriptor: for a program of
/// one thread that stands beside a worker. Throws platform::Error.
class SignalQueue {
  public:
    SignalQueue();
    int descriptor() const { return signals_.descriptor(); }

  private:
    platform::FileHandle signals_;
};

}  // namespace multiscene::cli
