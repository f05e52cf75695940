// Mixes a timeline, block by block, so that memory does not grow with its length.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stop_token>

#include "platform/audio/AudioTimeline.h"

namespace platform {

/// Gives the samples of a timeline from its start to its end. Volumes are evaluated on every sample; the sum
/// is cut off at -1 and 1. The timeline must outlive the mixer.
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

struct AudioMixSettings {
    int bitRate = 128000;  ///< bits a second, AAC
};

/// Mixes the timeline and encodes it once, as AAC into an M4A file at `output`, whatever that name ends in.
/// The same timeline always gives the same bytes. Throws Error: Transient for a full disk, Cancelled when
/// `stop` was requested, else Failed (also for an empty timeline); no output file is left then.
void writeAudioMix(const AudioTimeline& timeline, const std::filesystem::path& output,
                   const AudioMixSettings& settings = {}, std::stop_token stop = {});

}  // namespace platform
