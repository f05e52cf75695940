#include "app/Job/JobSummary.h"

#include <algorithm>

#include "app/Job/PreparedGroup.h"

namespace multiscene {

JobSummary summaryOf(const PreparedGroup& group, int64_t frames, const FrameStatistics& statistics) {
    JobSummary summary;
    summary.format = group.format;
    summary.frames = frames;
    summary.missingInputs = group.missingInputs;
    summary.statistics = statistics;
    summary.skipped = RenderReport::shared().entries();
    std::erase_if(summary.skipped, [&](const RenderReport::Entry& entry) {
        const auto& missing = group.missingInputs;
        return std::find(missing.begin(), missing.end(), entry.name) != missing.end();
    });
    return summary;
}

}  // namespace multiscene
