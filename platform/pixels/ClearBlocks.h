// Where a picture is empty, so that painting it can leave those parts out.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/pixels/Surface.h"

namespace platform {

/// Remembers which squares of texels hold anything. Never changes; any thread.
class ClearBlocks {
  public:
    explicit ClearBlocks(const Surface& picture);

    /// Nothing but zeros from one texel to another, both included; places beyond the picture count as its
    /// rim. Says no where it does not know.
    bool isClear(int left, int top, int right, int bottom) const;
    /// Some square is clear: asking is worth its time.
    bool isUseful() const { return isUseful_; }

  private:
    int countUpTo(int column, int row) const;

    int width_, height_, columns_, rows_;
    /// How many squares left of and above a corner hold something.
    std::vector<int32_t> counts_;
    bool isUseful_ = false;
};

}  // namespace platform
