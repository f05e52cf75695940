// How loud sound is, by EBU R 128.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

namespace platform {

/// What a stretch of sound measures.
struct Loudness {
    /// LUFS, gated; of less than 0.4 s, the length of one gating block, the loudness of the whole, ungated.
    /// None for silence, which is everything below -70 LUFS.
    std::optional<double> integrated;
    std::optional<double> truePeak;  ///< dB over full scale, between the samples too; none for all zeros
};

/// Measures interleaved stereo samples at kAudioSampleRate, given piece by piece.
class LoudnessMeter {
  public:
    /// Throws Error(Transient) when there is no memory.
    LoudnessMeter();
    ~LoudnessMeter();

    void add(const float* samples, int64_t frames);
    /// Of everything added so far.
    Loudness loudness() const;

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace platform
