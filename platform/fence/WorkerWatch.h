#pragma once

#include <sys/types.h>

#include <cstdint>

#include "platform/fence/WorkerEnd.h"
#include "platform/fence/WorkerLimits.h"

namespace platform {

/// Looks at what a worker takes. Supervisor's thread.
class WorkerWatch {
  public:
    struct Finding {
        WorkerFault fault = WorkerFault::None;
        uint64_t limit = 0;
    };

    WorkerWatch(pid_t process, const WorkerLimits& limits);

    /// The worker has got on: the time for one step begins anew.
    void sign();
    /// So many seconds were not the worker's.
    void leaveOut(double seconds);
    /// The worker makes so many frames (below 0: nobody knows) of so many pixels; more than once adds up.
    /// Until it says so it makes none.
    void plan(int64_t frames, int64_t pixels);
    /// The first limit that the worker is beyond. Cheap enough for twenty times a second.
    Finding look();
    /// Bytes: the most private resident memory that was seen.
    uint64_t peakBytes() const { return peakBytes_; }

  private:
    void readStatus();
    double cpuSeconds() const;

    pid_t process_;
    WorkerLimits given_, limits_;
    int64_t frames_ = 0, pixels_ = 0;
    double start_, stepStart_, stepCpu_ = 0;
    uint64_t bytes_ = 0, peakBytes_ = 0, threads_ = 0;
};

}  // namespace platform
