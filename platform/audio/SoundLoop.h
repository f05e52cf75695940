#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/audio/AudioFile.h"

namespace platform {

/// A sound file from some place to its end, over and over without a gap. What is short is decoded once and
/// kept, at most a minute (21 MB); what is long is decoded again for each round. The file must outlive it.
class SoundLoop {
  public:
    /// `start`: sample frames into the file. From its end on there is only silence.
    SoundLoop(const AudioFile& file, int64_t start);

    /// The next `frames` sample frames, always all of them; silence where the file cannot be decoded.
    void read(float* samples, int64_t frames);
    /// Goes on `frames` sample frames later.
    void skip(int64_t frames);

  private:
    void decode(float* samples, int64_t frames);
    void keepAll();

    const AudioFile& file_;
    const int64_t start_, length_;  ///< of one round
    int64_t position_ = 0;          ///< within the round
    std::vector<float> kept_;       ///< a whole round; empty when it is too long for that
    std::optional<AudioFile::Reader> reader_;
};

}  // namespace platform
