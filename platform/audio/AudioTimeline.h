// Clips placed on one timeline: what is heard when, and how loud. The mixing itself is in AudioMixer.h.
#pragma once

#include <memory>
#include <vector>

#include "platform/audio/AudioFile.h"
#include "platform/audio/VolumeEnvelope.h"
#include "platform/base/CMTime.h"

namespace platform {

/// A piece of a sound file on the timeline. Times are rounded to whole sample frames.
struct AudioInsertion {
    std::shared_ptr<const AudioFile> file;
    CMTime sourceStart{0, 1, 1, 0};  ///< where in the file the piece begins
    CMTime duration;                 ///< how long it sounds; silence where the file is shorter
    CMTime at;                       ///< when it begins on the timeline
    bool isLooped = false;           ///< at the file's end it goes on from `sourceStart`
};

/// Pieces with one volume curve. Pieces that overlap are added.
struct AudioTrack {
    std::vector<AudioInsertion> insertions;
    VolumeEnvelope volume;
    std::vector<VolumeEnvelope> fades = {};  ///< multiplied onto `volume`
};

struct AudioTimeline {
    std::vector<AudioTrack> tracks;
    /// Multiplied onto the sum of all tracks: the fade of the whole film.
    VolumeEnvelope masterVolume;
    /// How long the mix is; 0: until the last piece ends.
    CMTime duration{0, 1, 1, 0};
};

}  // namespace platform
