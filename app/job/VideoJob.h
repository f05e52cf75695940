#pragma once

#include <filesystem>
#include <stop_token>

#include "app/job/JobObserver.h"
#include "app/job/JobSummary.h"
#include "app/job/RenderRequest.h"

namespace multiscene {

struct VideoRequest : RenderRequest {
    std::filesystem::path output;
    int bitRate = 1500000;            ///< bits a second
    std::string preset = "veryfast";  ///< of the H.264 encoder
    std::optional<double> loudness;   ///< LUFS of the finished sound; none: as loud as it is mixed
    std::filesystem::path pictures;   ///< a folder for what FramePictures writes; empty: nothing
};

/// Makes a finished video: opens the template or group, renders, mixes, joins. The output appears under its
/// name only when it is complete; nothing else is left behind. The same request always gives the same file.
/// Main thread; pumps the main queue. Throws platform::Error, Cancelled when a stop was requested.
JobSummary makeVideo(const VideoRequest& request, JobObserver& observer, std::stop_token stop);

}  // namespace multiscene
