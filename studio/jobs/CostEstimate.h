#pragma once

#include <cstdint>
#include <optional>

namespace multiscene::studio {

/// What a video is expected to take: frames × pixels × what a pixel of that template took before. No state.
struct CostEstimate {
    /// Milliseconds. `picoseconds`: measured, a pixel of a frame; none: a usual template's.
    static int64_t milliseconds(int64_t frames, int64_t pixels, std::optional<int64_t> picoseconds);
    /// What a pixel of a frame took in a video that took so long.
    static int64_t picoseconds(int64_t frames, int64_t pixels, double seconds);
};

}  // namespace multiscene::studio
