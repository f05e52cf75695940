#pragma once

#include <functional>
#include <stop_token>
#include <string>

#include "app/job/FrameSelection.h"
#include "app/job/JobObserver.h"
#include "app/job/JobSummary.h"
#include "app/job/RenderRequest.h"

namespace multiscene {

struct TraceRequest : RenderRequest {
    FrameSelection selection;
    bool draws = false;  ///< draw the frames too, though nobody sees them
};

/// Gives one JSON object for each frame wanted, sampled after its matrices were updated. `writeLine` is
/// called on the render queue. Main thread; pumps the main queue. Throws platform::Error, Cancelled when a
/// stop was requested.
JobSummary traceFrames(const TraceRequest& request, const std::function<void(const std::string&)>& writeLine,
                       JobObserver& observer, std::stop_token stop);

}  // namespace multiscene
