// A volume that changes over time by steps and linear ramps.
#pragma once

#include <cstdint>
#include <vector>

namespace platform {

/// Times are whole hundredths of a second (441 sample frames each). Before the first set point the volume
/// is 1. A set point is a step: its volume holds until the next one. Inside a ramp's range the ramp rules,
/// whatever points lie in it; after its end its last volume holds. Of two entries for the same time the later
/// added wins. A volume below 0 is silence.
class VolumeEnvelope {
  public:
    void setVolume(float volume, int64_t hundredths);
    /// A ramp that does not end after its start is left out.
    void addRamp(float startVolume, float endVolume, int64_t startHundredths, int64_t endHundredths);

    bool isEmpty() const { return entries_.empty(); }
    /// The volume at a sample frame, counted from the start of the timeline.
    float volumeAtFrame(int64_t frame) const;
    /// Multiplies interleaved stereo samples, of which the first is the timeline's sample frame `firstFrame`,
    /// by the volume at each of them.
    void apply(float* samples, int64_t firstFrame, int64_t frames) const;

  private:
    struct Entry {
        float startVolume, endVolume;
        int64_t startFrame, endFrame;  ///< equal for a set point
        float volumeAtFrame(int64_t frame) const;
    };
    void add(float startVolume, float endVolume, int64_t startHundredths, int64_t endHundredths);
    const Entry* entryAtFrame(int64_t frame) const;
    int64_t nextChangeAfterFrame(int64_t frame) const;

    std::vector<Entry> entries_;
};

}  // namespace platform
