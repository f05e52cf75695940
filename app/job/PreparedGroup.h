// A scene group that is ready to be played: everything is read and judged.
#pragma once

#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "app/job/JobFolder.h"
#include "app/job/JobObserver.h"
#include "app/job/Playable.h"
#include "app/job/PreparedFiles.h"
#include "app/job/RenderRequest.h"
#include "group/SceneGroup.h"
#include "playback/Playback.h"

namespace multiscene {

struct PreparedGroup {
    std::shared_ptr<Playback> playback;  ///< what the video is played with
    Playable playable;
    MediaFormat format;  ///< of the video
    Renderer renderer = Renderer::Auto;
    platform::FrameLayout layout;  ///< of the drawn picture in it
    SceneGroup group;              ///< with the user's values
    int64_t totalFrames = 0;       ///< as the catalogue and the clocks say; below 1 when they do not
    std::string musicPath;         ///< empty: no music
    std::vector<std::string> missingInputs;  ///< keys that the user did not give
    std::shared_ptr<PreparedFiles> files;    ///< of the job's folder, which outlives it

    double seconds(int64_t frames) const { return static_cast<double>(frames) / format.framesPerSecond; }
};

/// Opens the source, judges it, takes in the user's values and tells the observer what the user should
/// know before it starts; keeps the scene-group file in the job's folder. Several may be prepared at once.
/// Throws platform::Error.
PreparedGroup prepareGroup(const RenderRequest& request, const JobFolder& job, JobObserver& observer,
                           const std::stop_token& stop);

}  // namespace multiscene
