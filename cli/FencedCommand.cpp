#include "cli/FencedCommand.h"

#include <fcntl.h>

#include <cerrno>
#include <exception>
#include <optional>

#include "app/job/JobFolder.h"
#include "platform/base/Activity.h"
#include "platform/base/File.h"
#include "platform/base/Log.h"

namespace multiscene::cli {

int FencedCommand::execute(Console& console, const JobSettings& settings) {
    FencedWork fenced(console, settings);
    fenced_ = &fenced;
    std::optional<JobFolder> job;
    if (needsFolder()) job.emplace(cancelling());
    const std::filesystem::path folder = job ? job->path() : std::filesystem::path();
    Errand errand = prepare(folder);
    errand.folder = folder;
    bool isPublished = false;
    try {
        return fenced.run(
            errand,
            [this](Workplace& place) {
                return work(place.console, place.stop, [&] { place.ask({"publish"}); });
            },
            [&](const std::vector<std::string>&) {
                if (isPublished) return;
                isPublished = true;
                platform::log::info("stage: publishing");
                publish();
                fenced.commit();
            });
    } catch (const std::exception& failure) {
        // The result has its name, whatever becomes of the worker after that.
        if (!fenced.isCommitted()) throw;
        platform::log::info(failure.what());
        return 0;
    }
}

void FencedCommand::flush(const std::filesystem::path& made) {
    namespace fs = std::filesystem;
    platform::activity::stage("writing to the disk");
    const auto flushOne = [](const fs::path& path) {
        const platform::FileHandle file = platform::openFile(path, O_RDONLY);
        if (!file) throw platform::errnoError(errno, "cannot read", path.string());
        platform::flushToDisk(file, path.string());
        platform::activity::sign();
    };
    if (platform::isFile(made)) return flushOne(made);
    for (const auto& entry : fs::recursive_directory_iterator(made))
        if (entry.is_regular_file()) flushOne(entry.path());
}

}  // namespace multiscene::cli
