#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>

#include "app/job/FrameSelection.h"
#include "app/job/JobObserver.h"
#include "app/job/JobSummary.h"
#include "app/job/RenderRequest.h"

namespace multiscene {

struct FramesRequest : RenderRequest {
    FrameSelection selection;
    std::filesystem::path output;  ///< a folder
    bool keepsAlpha = false;       ///< else the pictures are opaque, as the video is
};

/// Writes frames as PNG files "frame-000010.png", top row first: what the video shows, or, with alpha, what
/// gives that over black. Frame N is the video's frame stamped (N + 1)/fps. A job that does not end well
/// takes its pictures out of the folder. Main thread; pumps the main queue. Throws platform::Error, Cancelled
/// when a stop was requested.
JobSummary writeFrames(const FramesRequest& request, JobObserver& observer, std::stop_token stop);

/// Moves the pictures that writeFrames() has left into another folder and takes those of earlier jobs out of
/// it. Throws platform::Error, and then has changed nothing, as far as the disk still lets it.
void movePictures(const std::filesystem::path& from, const std::filesystem::path& to,
                  const std::function<bool()>& isCancelled = {});

}  // namespace multiscene
