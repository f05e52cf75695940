// Where sound comes out of the machine.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

/// A sound device that plays until it is gone.
class SoundOut {
  public:
    /// Fills interleaved stereo samples from -1 to 1. On a thread of the device's own; must not wait.
    using Source = std::function<void(float* samples, int64_t frames)>;

    virtual ~SoundOut() = default;
    /// Sample frames that the device takes at once.
    virtual int64_t blockFrames() const = 0;
};

/// Opens the usual device; it takes `rate` sample frames a second. Throws Error(Failed) when there is none.
std::unique_ptr<SoundOut> openSoundOut(int rate, SoundOut::Source source);

}  // namespace platform
