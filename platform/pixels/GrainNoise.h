// Noise that is the same on every machine.
#pragma once

#include <array>
#include <cstdint>

#include "platform/pixels/Surface.h"

namespace platform {

/// A grey picture that fits to itself at all sides: 128 on average, grains of two pixels.
Surface grainNoise();

/// Where a frame's noise begins in the picture: whole pixels, another place in each frame.
std::array<float, 2> grainShift(int64_t frame);

}  // namespace platform
