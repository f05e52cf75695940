#include "app/job/TraceJob.h"

#include "app/job/GroupRun.h"
#include "output/PictureSink.h"
#include "platform/base/Json.h"
#include "trace/SceneTrace.h"

namespace multiscene {

JobSummary traceFrames(const TraceRequest& request, const std::function<void(const std::string&)>& writeLine,
                       JobObserver& observer, std::stop_token stop) {
    const double start = platform::monotonicSeconds();
    const JobFolder job;
    const PreparedGroup group = prepareGroup(request, job, observer, stop);

    request.selection.requireAnnounced(group.totalFrames);
    std::shared_ptr<FrameSink> sink;
    if (request.draws) sink = std::make_shared<PictureSink>(group.layout, [](const PictureSink::Picture&) {});
    GroupRun run(group, sink, nullptr, observer, std::move(stop));
    run.setFrameLimit(request.selection.framesNeeded());
    run.setSampler([&](int64_t frame, const RenderDriver& driver) {
        if (request.selection.contains(frame)) writeLine(platform::jsonText(SceneTrace::frame(driver)));
    });
    const int64_t frames = run.play();
    request.selection.requireWithin(frames);

    JobSummary summary = summaryOf(group, frames, run);
    summary.wallSeconds = platform::monotonicSeconds() - start;
    return summary;
}

}  // namespace multiscene
