// A framebuffer's pixels into the caller's memory.
#pragma once

#include "platform/pixels/Surface.h"

namespace multiscene {

/// Reads a part of a framebuffer with one sample, of the canvas's size, from `left` and `bottom` on, into
/// the canvas: B, G, R, A, the top row first. Waits until everything drawn is there. The framebuffer stays
/// bound.
void readFramebuffer(unsigned int framebuffer, int left, int bottom, const platform::Canvas& canvas);

}  // namespace multiscene
