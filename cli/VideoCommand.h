#pragma once

#include <optional>

#include "app/job/OutputFile.h"
#include "app/job/VideoJob.h"
#include "cli/FencedCommand.h"

namespace multiscene::cli {

/// A command whose result is a video.
class VideoCommand : public FencedCommand {
  protected:
    Errand prepare(const std::filesystem::path& folder) override;
    int work(Console& console, std::stop_token stop, const std::function<void()>& publish) override;
    void publish() override;

    VideoRequest request_;

  private:
    std::optional<OutputFile> output_;
};

}  // namespace multiscene::cli
