// Mixes a timeline, block by block, so that memory does not grow with its length.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/audio/AudioTimeline.h"

namespace platform {

/// Gives the samples of a timeline from its start to its end. Volumes are evaluated on every sample; the sum
/// may go over full scale. The timeline must outlive the mixer.
class AudioMixer {
  public:
    explicit AudioMixer(const AudioTimeline& timeline);
    ~AudioMixer();

    /// Length of the mix in sample frames.
    int64_t frameCount() const;
    /// The next `frames` sample frames, interleaved stereo at kAudioSampleRate; fewer only at the end.
    int64_t read(float* samples, int64_t frames);

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace platform
