// What the preview sounds like, and what time it is in it.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/soundOut/SoundOut.h"

namespace multiscene {

/// Sound leads: time goes on by what the device has taken, and stands where there is no sound in time. Where
/// there is no device, or it has gone, a clock keeps the time in silence. Positions are sample frames at
/// kAudioSampleRate. Any thread.
class PreviewSound {
  public:
    /// Opens the device. `isSilent`: does not.
    explicit PreviewSound(bool isSilent = false);
    ~PreviewSound();

    /// Why there is no sound; empty when there is.
    const std::string& fault() const { return fault_; }

    void setPlaying(bool isPlaying);
    void setMuted(bool isMuted);
    void seek(int64_t position);
    /// Time stands from here on.
    void setEnd(int64_t position);
    /// What is heard now.
    int64_t position();
    /// Whether enough is there to begin with.
    bool isReady();

    /// The samples that are wanted next, and from then on are on their way: where they begin, how many. None
    /// while there is enough.
    std::pair<int64_t, int64_t> wanted();
    /// Samples that have come; those of another place than is wanted are dropped.
    void take(int64_t from, const float* samples, int64_t frames);
    /// What was on its way will not come.
    void forget();

  private:
    void fill(float* samples, int64_t frames);
    bool keepsTimeByClock(double now) const;
    int64_t clockPosition(double now) const;
    void restart(int64_t position, double now);

    std::string fault_;
    std::mutex mutex_;
    bool isPlaying_ = false, isMuted_ = false;
    std::deque<float> samples_;           ///< from taken_ on
    int64_t taken_ = 0, asked_ = 0;       ///< by the device; on their way, up to here
    int64_t end_ = INT64_MAX, told_ = 0;  ///< told_: time does not go back
    int64_t block_ = 1024;
    double filledAt_ = 0;   ///< when the device asked last
    int64_t filledTo_ = 0;  ///< and what it had taken before
    int64_t clockStart_ = 0;
    double clockAt_ = 0;
    std::unique_ptr<platform::SoundOut> device_;  // last: its thread ends first
};

}  // namespace multiscene
