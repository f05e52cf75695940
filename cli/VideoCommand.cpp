#include "cli/VideoCommand.h"

#include "cli/SourceReach.h"

namespace multiscene::cli {

Errand VideoCommand::prepare(const std::filesystem::path& folder) {
    output_.emplace(OutputFile::video(request_.output));
    request_.output = folder / "finished.mp4";
    return errandOf(request_);
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
