#include "platform/fence/SelfTest.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>

#include "platform/fence/Supervisor.h"
#include "platform/fence/SystemCallFilter.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

/// Somebody listens on the loopback while the object lives.
class Listening {
  public:
    Listening() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        auto* const address = reinterpret_cast<sockaddr*>(&address_);
        if (!socket_ || ::bind(socket_.descriptor(), address, size) != 0 ||
            ::listen(socket_.descriptor(), 1) != 0 ||
            ::getsockname(socket_.descriptor(), address, &size) != 0)
            throw errnoError(errno, "cannot listen on the loopback", "");
    }
    int port() const { return ntohs(address_.sin_port); }

  private:
    FileHandle socket_;
    sockaddr_in address_{};
};

/// So small that what never ends is ended soon.
WorkerLimits smallLimits() {
    WorkerLimits limits;
    limits.memoryBytes = uint64_t{256} << 20;
    limits.fileBytes = uint64_t{64} << 20;
    limits.openFiles = 256;
    limits.stepCpuSeconds = limits.stepSeconds = 1;
    return limits;
}

bool isStanding(Wall wall) {
    switch (wall) {
        case Wall::Files:
            return landlockVersion() >= 2;
        case Wall::SystemCalls:
            return hasSystemCallFilter() && !isSanitized();
        case Wall::Limits:
            return !isSanitized();
    }
    return true;
}

AttemptResult resultOf(const BreakOutAttempt& attempt, const BreakOutTargets& targets, int signals) {
    const WorkerLimits limits = smallLimits();
    AttemptResult result{attempt.name, false, !isStanding(attempt.wall), ""};
    bool isTold = false;
    Worker worker([&](Channel& channel) {
        Reach reach = reachOfLibraries();
        reach.write.push_back(targets.inside);
        limits.apply();
        enterSandbox(reach);
        channel.send(Message::make(Message::Kind::Output, {attempt.run(targets)}));
        channel.send(Message::make(Message::Kind::Done, {"0"}));
        return 0;
    });
    Supervisor supervisor(worker, limits, signals, [&](Message& message) {
        isTold = true;
        result.how = message.field(0);
    });
    try {
        supervisor.run();
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Cancelled) throw;
        // One that ended by itself has become another program.
        if (!isTold && supervisor.fault() != WorkerFault::None) result.how = error.message();
    }
    result.isDenied = !result.how.empty();
    return result;
}

}  // namespace

void tryToBreakOut(const fs::path& folder, int signals,
                   const std::function<void(const AttemptResult&)>& told) {
    const Listening listening;
    const BreakOutTargets targets{folder / "home" / ".ssh" / "id", folder / "home", folder / "job",
                                  listening.port()};
    createFolders(targets.secret.parent_path());
    createFolders(targets.inside);
    for (const BreakOutAttempt& attempt : breakOutAttempts()) {
        writeFileAtomically(targets.secret, "nobody else's");
        told(resultOf(attempt, targets, signals));
    }
}

}  // namespace platform
