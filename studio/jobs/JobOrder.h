#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace multiscene::studio {

/// A job that waits.
struct WaitingJob {
    std::string id, session;
    bool isUrgent = false;  ///< before the others
    int64_t created = 0;    ///< milliseconds since 1970
};

/// In which order jobs get their turn: the urgent ones first; of these and of the others the sessions one
/// after the other, first the one whose turn is the longest ago; of a session the oldest first. `turns`: when
/// each session had its turn, in a count of turns; none: never. No state.
std::vector<WaitingJob> inOrder(std::vector<WaitingJob> jobs, std::map<std::string, int64_t> turns);

}  // namespace multiscene::studio
