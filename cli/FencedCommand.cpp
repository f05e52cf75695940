#include "cli/FencedCommand.h"

#include <optional>

#include "app/job/JobFolder.h"
#include "platform/base/Log.h"

namespace multiscene::cli {

int FencedCommand::execute(Console& console, const JobSettings& settings) {
    FencedWork fenced(console, settings);
    fenced_ = &fenced;
    std::optional<JobFolder> job;
    if (needsFolder()) job.emplace();
    const std::filesystem::path folder = job ? job->path() : std::filesystem::path();
    Errand errand = prepare(folder);
    errand.folder = folder;
    bool isPublished = false;
    return fenced.run(
        errand,
        [this](Workplace& place) { return work(place.console, place.stop, [&] { place.ask({"publish"}); }); },
        [&](const std::vector<std::string>&) {
            if (isPublished) return;
            isPublished = true;
            platform::log::info("stage: publishing");
            publish();
            fenced.commit();
        });
}

}  // namespace multiscene::cli
