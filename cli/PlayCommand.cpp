#include <sys/socket.h>

#include <cerrno>
#include <filesystem>

#include "app/job/JobFolder.h"
#include "app/preview/PreviewPerformer.h"
#include "cli/Commands.h"
#include "cli/FencedWork.h"
#include "cli/PreviewProcess.h"
#include "cli/RenderOptions.h"
#include "cli/SourceReach.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
using platform::FileHandle;

namespace {

std::pair<FileHandle, FileHandle> connectedPair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw platform::errnoError(errno, "cannot connect window and worker", "");
    return {FileHandle(ends[0]), FileHandle(ends[1])};
}

/// Somebody may look at a window for days.
JobSettings withoutTimeLimits(JobSettings settings) {
    constexpr uint64_t years = uint64_t{10} * 365 * 24 * 3600;
    settings.limits.firstSeconds = settings.limits.cpuSeconds = settings.limits.wallSeconds = years;
    return settings;
}

class PlayCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        declareSource(arguments, request_, true);
        declareInputs(arguments, request_);
        declareFormat(arguments, request_);
        declareFit(arguments, request_);
        declareRenderer(arguments, request_);
        declareJudgement(arguments, request_);
        declareMusic(arguments, request_);
        arguments.flag("--watch", "Show what is saved in the template's folder at once", isWatching_);
        arguments.example(
            "multiscene play templates/sunny-day --media templates/sunny-day/sample/inputs.json");
        arguments.example("multiscene play my-template --watch");
    }

    int execute(Console& console, const JobSettings& settings) override {
        if (isWatching_ && !std::filesystem::exists(request_.source))
            throw Error(ErrorKind::Usage, "follows files, and there are none of this name", request_.source,
                        "--watch");
        Errand errand = errandOf(request_);
        PreviewProcess window({.isWatching = isWatching_, .watched = errand.reach.read});
        const JobSettings lifted = withoutTimeLimits(settings);
        FencedWork fenced(console, lifted);
        const JobFolder job([&fenced] { return fenced.isCancelled(); });
        errand.folder = job.path();
        do playOnce(window, fenced, errand);
        while (window.wish([&] { return fenced.isCancelled(); }) == PreviewProcess::Wish::AnotherWorker);
        window.close();
        return 0;
    }

  private:
    /// One worker, until it is no longer wanted. Throws platform::Error where nothing can follow.
    void playOnce(PreviewProcess& window, FencedWork& fenced, Errand errand) {
        auto [shown, drawn] = connectedPair();
        errand.connection = drawn.descriptor();
        window.connect(std::move(shown));
        try {
            fenced.run(errand, [this](Workplace& place) { return perform(place); });
        } catch (const Error& error) {
            if (isWatching_ && error.kind() != ErrorKind::Cancelled) return window.say(error);
            drawn.reset();
            window.close();
            throw;
        }
    }

    int perform(Workplace& place) const {
        platform::Channel window(std::move(place.connection));
        PreviewPerformer performer(window, request_, isWatching_, place.console, place.stop);
        performer.run();
        return 0;
    }

    RenderRequest request_;
    bool isWatching_ = false;
};

}  // namespace

std::unique_ptr<Command> makePlayCommand() { return std::make_unique<PlayCommand>(); }

}  // namespace multiscene::cli
