// Keeps sound under a ceiling, also between its samples.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "platform/audio/AudioFile.h"

namespace platform {

/// Looks ahead a few milliseconds and turns the volume down smoothly before a peak comes, and up again after
/// it. Interleaved stereo at kAudioSampleRate; both channels get the same volume. Sound that stays under the
/// ceiling comes out bit for bit. One use for one stream.
class TruePeakLimiter {
  public:
    /// `ceiling`: the highest true peak, as a factor of full scale.
    explicit TruePeakLimiter(float ceiling);

    /// Takes samples and appends those that are ready to `output`: they come kLatency frames later.
    void process(const float* samples, int64_t frames, std::vector<float>& output);
    /// Appends what is still held back. As many samples come out in all as went in.
    void finish(std::vector<float>& output);

  private:
    static constexpr int kTaps = 12;        ///< of the interpolation
    static constexpr int kPhases = 4;       ///< points looked at from one sample to the next
    static constexpr int64_t kAhead = 220;  ///< frames, 5 ms
    static constexpr int64_t kLatency = kAhead + kTaps / 2;

    void take(const float* frame, std::vector<float>& output);
    float peak() const;
    float wantedVolume();
    float smoothed(float volume);

    const float ceiling_;
    std::array<std::array<float, kTaps>, kPhases> points_{};
    std::array<std::array<float, kTaps>, kAudioChannels> latest_{};  ///< the newest sample last
    std::vector<float> delayed_;                                     ///< a ring of kLatency + 1 frames
    std::deque<std::pair<int64_t, float>> lowest_;  ///< volumes asked for that no later one undercuts
    std::vector<double> window_;                    ///< a ring of the volumes that are averaged
    double windowSum_ = 0;
    int64_t reduced_ = 0;   ///< of them, how many are below 1
    double released_ = 1;   ///< a float would stop short of 1
    int64_t position_ = 0;  ///< frames taken
    int64_t given_ = 0;
};

}  // namespace platform
