#include "app/job/JobSummary.h"

#include <algorithm>

#include "app/job/GroupRun.h"
#include "app/job/PreparedGroup.h"

namespace multiscene {

JobSummary summaryOf(const PreparedGroup& group, int64_t frames, const GroupRun& run) {
    JobSummary summary;
    summary.format = group.format;
    summary.frames = frames;
    summary.missingInputs = group.missingInputs;
    summary.statistics = run.statistics();
    summary.drawnBy = run.drawnBy();
    for (RenderReport::Entry& entry : group.playback->report().entries()) {
        const auto& missing = group.missingInputs;
        if (std::find(missing.begin(), missing.end(), entry.name) != missing.end()) continue;
        (entry.isLeftOut ? summary.skipped : summary.usedOtherwise).push_back(std::move(entry));
    }
    return summary;
}

}  // namespace multiscene
