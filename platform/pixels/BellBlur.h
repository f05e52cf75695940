// A picture out of focus: a small copy of it, blurred by a bell curve of any width at a cost of its own size.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/pixels/Surface.h"

namespace platform {

class TilePainter;

/// How a blur is done: the picture is halved so often, then blurred by a narrow curve.
struct BellSteps {
    int halvings = 0;
    /// Of the pixel itself and those beside it to either side, of 65536; they add up to that.
    std::vector<int> weights;
};

/// `sigma`: of the curve, in pixels of the whole picture, 0 to a few thousand.
BellSteps bellSteps(double sigma);

/// Sides of a picture that has been halved: half a pixel counts as one.
inline int halved(int side) { return (side + 1) / 2; }

/// Halves and blurs a picture across, then down. Keeps its memory for the next one.
class BellBlur {
  public:
    /// What results is valid until the next call: the size of the picture, halved. Colours are mixed as they
    /// are; beyond the rim lies the rim. The same bytes on every processor.
    Surface blur(const Surface& picture, const BellSteps& steps, TilePainter& threads);

  private:
    Canvas canvas(int slot, int width, int height);

    std::vector<uint8_t> memory_[2];
};

}  // namespace platform
