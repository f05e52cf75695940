// One track of a timeline, block by block.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/audio/AudioTimeline.h"

namespace platform {

/// Gives what a track adds to the mix, from any place of the timeline on: the first block may lie anywhere,
/// each further one follows the one before. One thread at a time.
class TrackMixer {
  public:
    static constexpr int64_t kMostFrames = 1024;  ///< of a block

    explicit TrackMixer(const AudioTrack& track);
    ~TrackMixer();
    TrackMixer(TrackMixer&&) noexcept;
    TrackMixer& operator=(TrackMixer&&) noexcept;

    /// Where the last piece ends, in sample frames.
    int64_t end() const { return end_; }
    /// From the next block on.
    void setVolume(VolumeEnvelope volume) { track_.volume = std::move(volume); }
    void setFades(std::vector<VolumeEnvelope> fades) { track_.fades = std::move(fades); }
    /// Adds the sample frames from `frame` on to `sum`, interleaved stereo.
    void addTo(float* sum, int64_t frame, int64_t frames);

  private:
    class Piece;

    AudioTrack track_;
    std::vector<Piece> waiting_;  ///< the next one last
    std::vector<Piece> sounding_;
    int64_t end_ = 0;
};

/// A time of the timeline as a number of sample frames, rounded.
int64_t sampleFramesOf(const CMTime& time);

}  // namespace platform
