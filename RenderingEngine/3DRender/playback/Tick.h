#pragma once

#include <cstdint>

namespace multiscene {

/// What a scene's clock says of a turn.
struct Tick {
    int64_t frame = 0;  ///< counted in the scene, from 0
    /// False when the turn shows the frame of the turn before, as the last one of a video that ran dry: what
    /// happens on a certain frame happens once.
    bool isNew = true;
};

}  // namespace multiscene
