#include "cli/VideoCommand.h"

#include "cli/SourceReach.h"

namespace multiscene::cli {

Errand VideoCommand::prepare(const std::filesystem::path& folder) {
    output_.emplace(OutputFile::video(request_.output));
    request_.output = folder / "finished.mp4";
    Errand errand = errandOf(request_);
    if (!request_.pictures.empty()) errand.reach.write.push_back(request_.pictures);
    return errand;
}

int VideoCommand::work(Console& console, std::stop_token stop, const std::function<void()>& publish) {
    JobSummary summary = makeVideo(request_, console, std::move(stop));
    flush(request_.output);
    publish();
    summary.output = output_->path();
    console.jobDone(summary);
    return 0;
}

void VideoCommand::publish() { output_->publish(request_.output, cancelling()); }

}  // namespace multiscene::cli
