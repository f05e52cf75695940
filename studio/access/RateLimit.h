#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

namespace multiscene::studio {

/// So many tries each span, of each who tries. One thread.
class RateLimit {
  public:
    using Clock = std::chrono::steady_clock;

    RateLimit(size_t most, std::chrono::seconds span) : most_(most), span_(span) {}

    /// Whether one more is within the limit; if so it counts.
    bool take(const std::string& who, Clock::time_point now = Clock::now()) {
        std::erase_if(tries_, [&](const auto& each) { return now - each.second.since >= span_; });
        Tries& tries = tries_.try_emplace(who, Tries{now, 0}).first->second;
        return ++tries.count <= most_;
    }

    /// Those of `who` do not count any more.
    void forgive(const std::string& who) { tries_.erase(who); }

    std::chrono::seconds span() const { return span_; }

  private:
    struct Tries {
        Clock::time_point since;
        size_t count;
    };

    const size_t most_;
    const std::chrono::seconds span_;
    std::map<std::string, Tries> tries_;
};

}  // namespace multiscene::studio
