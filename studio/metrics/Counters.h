#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "studio/metrics/MetricsText.h"

namespace multiscene::studio {

/// What the studio's parts count while they work, since its start. Studio queue.
struct Counters {
    std::map<std::string, double> stageSeconds;                           ///< of jobs, by stage
    std::map<std::pair<std::string, std::string>, uint64_t> workerExits;  ///< by work and cause
    Histogram stills;                                                     ///< from asked to answered
    uint64_t uploadedBytes = 0;
    std::function<size_t()> previews = [] { return 0; };        ///< open now
    std::function<size_t()> previewWorkers = [] { return 0; };  ///< that hold one now
};

}  // namespace multiscene::studio
