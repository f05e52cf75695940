#pragma once

#include <cstdint>
#include <string>

#include "app/check/Finding.h"

namespace multiscene {

struct JobProgress {
    int64_t frame = 0;             ///< frames done
    int64_t totalFrames = 0;       ///< below 1: unknown
    double framesPerSecond = 0;    ///< of the work so far, 0 in its first moment
    double secondsRemaining = -1;  ///< below 0: unknown
};

/// Hears how a job gets on. Called on the main thread.
class JobObserver {
  public:
    virtual ~JobObserver() = default;
    /// What will be made is known: frames (below 1: nobody knows how many) of so many pixels.
    virtual void jobPlanned(int64_t /*frames*/, int64_t /*pixels*/) {}
    /// Several times a second while frames are rendered.
    virtual void jobProgress(const JobProgress&) {}
    /// What is wrong with the template, before anything is drawn. The fault that ends the job is not told: it
    /// is thrown.
    virtual void jobFinding(const Finding&) {}
    /// Something the user should know although the job goes on.
    virtual void jobNote(const std::string& /*text*/) {}
};

}  // namespace multiscene
