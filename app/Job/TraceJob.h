#pragma once

#include <functional>
#include <stop_token>
#include <string>

#include "app/Job/FrameSelection.h"
#include "app/Job/JobObserver.h"
#include "app/Job/JobSummary.h"
#include "app/Job/RenderRequest.h"

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
