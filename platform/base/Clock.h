#pragma once

namespace platform {

/// Seconds of a clock that never jumps, from an arbitrary start. Any thread.
double monotonicSeconds();

/// CPU seconds of the calling thread so far.
double threadCpuSeconds();

/// Sleeps the calling thread; a negative or zero time returns at once.
void sleepSeconds(double seconds);

}  // namespace platform
