// Where the scenes of a group show films that the user gives, and how much of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "group/SceneGroup.h"

namespace multiscene {

struct VideoPlace {
    std::string key;          ///< of the input
    std::string identifier;   ///< of the scene, may be empty
    int64_t leastFrames = 0;  ///< that the film must have
    /// That are seen at most; INT64_MAX where the film decides.
    int64_t mostFrames = 0;

    bool isAsLongAsTheFilm() const { return mostFrames == INT64_MAX; }
};

/// One for each node that shows a video under a key. A node whose range is written in the scene file needs a
/// film that fills it; where the length comes from the film, it must outlast the transitions of its scene by
/// one frame.
std::vector<VideoPlace> videoPlacesOf(const SceneGroup& group);

}  // namespace multiscene
