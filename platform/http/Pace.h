#pragma once

#include <chrono>
#include <cstdint>

#include "platform/http/Limits.h"

namespace platform::http {

/// Whether bytes move as fast as they have to. What was quick before counts for nothing: each span stands for
/// itself.
class Pace {
  public:
    using Time = std::chrono::steady_clock::time_point;

    void begin(Time now, uint64_t bytes) { spanStart_ = now, bytesThen_ = bytes; }

    bool isTooSlow(Time now, uint64_t bytes, const Limits& limits) {
        const auto span = now - spanStart_;
        if (span < limits.rateSpan) return false;
        const double wanted = static_cast<double>(limits.rate) * std::chrono::duration<double>(span).count();
        const bool isSlow = static_cast<double>(bytes - bytesThen_) < wanted;
        begin(now, bytes);
        return isSlow;
    }

  private:
    Time spanStart_;
    uint64_t bytesThen_ = 0;
};

}  // namespace platform::http
