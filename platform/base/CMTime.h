#pragma once

#include <cstdint>

namespace platform {

/// A media time of value/timescale seconds. In the scene graph only `value` counts: the frame number within
/// the scene, from 0.
struct CMTime {
    int64_t value = 0;
    int32_t timescale = 0;
    uint32_t flags = 0;
    int64_t epoch = 0;
};

inline CMTime CMTimeMake(int64_t value, int32_t timescale) { return {value, timescale, 1, 0}; }

inline double CMTimeGetSeconds(const CMTime& time) {
    return time.timescale == 0 ? 0.0 : static_cast<double>(time.value) / time.timescale;
}

}  // namespace platform
