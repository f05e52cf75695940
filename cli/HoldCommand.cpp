#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <filesystem>

#include "app/job/JobFolder.h"
#include "app/preview/StillPerformer.h"
#include "app/preview/StillTalk.h"
#include "cli/Commands.h"
#include "cli/FencedWork.h"
#include "cli/SourceReach.h"
#include "platform/base/Json.h"
#include "platform/base/LineSocket.h"

namespace multiscene::cli {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::FileHandle;
using platform::Value;

namespace {

constexpr int kConnection = 3;  // the descriptor under which the program that starts this one gives a socket
constexpr int kMostWidth = 4096;

/// Somebody may leave a preview open for days.
JobSettings withoutTimeLimits(JobSettings settings) {
    constexpr uint64_t years = uint64_t{10} * 365 * 24 * 3600;
    settings.limits.firstSeconds = settings.limits.cpuSeconds = settings.limits.wallSeconds = years;
    return settings;
}

/// Holds a video ready and draws stills of it for the program that has started this one (StillTalk.h).
class HoldCommand : public Command {
  public:
    void declare(Arguments&) override {}

    int execute(Console& console, const JobSettings& settings) override {
        FileHandle socket = connection();
        const JobSettings lifted = withoutTimeLimits(settings);
        FencedWork fenced(console, lifted);
        if (!readOpening(socket)) return 0;  // not needed after all
        const JobFolder job([&fenced] { return fenced.isCancelled(); });
        Errand errand = errandOf(request_.source);
        if (!folder_.empty()) errand.reach.read.push_back(folder_);
        errand.folder = job.path();
        errand.connection = socket.descriptor();
        return fenced.run(errand, [this](Workplace& place) {
            StillPerformer performer(std::move(place.connection), request_, stays_, place.console,
                                     place.stop);
            performer.run();
            return 0;
        });
    }

  private:
    static FileHandle connection() {
        int type = 0;
        socklen_t length = sizeof type;
        if (::getsockopt(kConnection, SOL_SOCKET, SO_TYPE, &type, &length) != 0 || type != SOCK_STREAM)
            throw Error(ErrorKind::Usage, "is started by the program itself, with a socket as descriptor 3");
        ::fcntl(kConnection, F_SETFD, FD_CLOEXEC);
        return FileHandle(kConnection);
    }

    /// The first line says what is held; everything after it is the worker's.
    bool readOpening(FileHandle& socket) {
        platform::LineSocket asker{FileHandle(::fcntl(socket.descriptor(), F_DUPFD_CLOEXEC, 0))};
        const auto line = asker.readLine(stillTalk::kLongestLine, true);
        if (!line) return false;
        const Value opening = platform::parseJson(*line, "what is asked", ErrorKind::Usage);
        if (opening.string("do") != stillTalk::kOpen || opening.string("template").empty())
            throw Error(ErrorKind::Usage, "the first line opens no template");
        request_.source = opening.string("template");
        request_.inputs.media = opening["values"];
        if (opening.has("width"))
            request_.mostWidth =
                static_cast<int>(std::clamp<int64_t>(opening.integer("width"), 16, kMostWidth));
        folder_ = opening.string("folder");
        stays_ = opening.boolean("stays");
        return true;
    }

    RenderRequest request_;
    bool stays_ = false;
    fs::path folder_;  ///< of the files that values name
};

}  // namespace

std::unique_ptr<Command> makeHoldCommand() { return std::make_unique<HoldCommand>(); }

}  // namespace multiscene::cli
