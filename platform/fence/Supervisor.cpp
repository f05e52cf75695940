#include "platform/fence/Supervisor.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include "platform/base/Clock.h"
#include "platform/base/Log.h"

namespace platform {

namespace {

constexpr const char* kDrawing = "drawing";
constexpr double kGrace = 0.25;  // seconds between asking and killing; the end takes time as well
constexpr double kDying = 0.2, kDyingAtFault = 5;
constexpr double kLooking = 0.05;  // seconds between looks at the limits
constexpr int kNap = 50;           // milliseconds

/// A pipe that can be written takes at least a page at once. A broken one is writable too.
bool isWritable(int descriptor) {
    pollfd output{descriptor, POLLOUT, 0};
    return ::poll(&output, 1, 0) != 0;
}

bool mayWrite() { return isWritable(STDOUT_FILENO) && isWritable(STDERR_FILENO); }

/// What a terminal would take for a command becomes a question mark.
void makeHarmless(std::string& text) {
    for (char& letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if ((code < 0x20 && letter != '\n' && letter != '\t') || code == 0x7f) letter = '?';
    }
}

ErrorKind blameOf(int64_t code) {
    if (code == static_cast<int64_t>(ErrorKind::Template)) return ErrorKind::Template;
    return code == static_cast<int64_t>(ErrorKind::Input) ? ErrorKind::Input : ErrorKind::Failed;
}

}  // namespace

Supervisor::Supervisor(Worker& worker, const WorkerLimits& limits, int signals, Listener listener)
    : worker_(worker),
      watch_(worker.process(), limits),
      signals_(signals),
      listener_(std::move(listener)),
      lookedAt_(monotonicSeconds()) {}

int Supervisor::run() {
    while (!worker_.ended() && !isLost()) {
        wait();
        readSignals();
        if (mayWrite()) {
            passErrorsOn();
            hear();
        }
        watchLimits();
        if (isCancelled_ && !killedAt_ && monotonicSeconds() >= killAt_) kill();
        // Its result stands, and nobody reads what it still says.
        if (isLate_ && !killedAt_ && !mayWrite()) kill();
    }
    if (!worker_.ended()) worker_.abandon();
    drain();
    return outcome(worker_.ended().value_or(SIGKILL));
}

void Supervisor::kill() {
    killedAt_ = monotonicSeconds();
    worker_.signal(SIGKILL);
}

/// Killed, but held in the kernel, by a disk for one: it runs no more, and nobody waits for that.
bool Supervisor::isLost() const {
    return killedAt_ && monotonicSeconds() - *killedAt_ > (isCancelled_ || isLate_ ? kDying : kDyingAtFault);
}

/// While nobody reads what the program writes, nothing more is taken from the worker.
void Supervisor::wait() {
    const bool listens = mayWrite();
    const auto input = [](int descriptor, bool wanted) {
        return pollfd{wanted ? descriptor : -1, POLLIN, 0};
    };
    const auto output = [](int descriptor) {
        return pollfd{isWritable(descriptor) ? -1 : descriptor, POLLOUT, 0};
    };
    pollfd waiting[] = {input(worker_.channel().descriptor(), listens && !worker_.channel().isClosed()),
                        input(worker_.errors(), listens && hasErrors_),
                        input(signals_, true),
                        input(worker_.endDescriptor(), !worker_.ended()),
                        output(STDOUT_FILENO),
                        output(STDERR_FILENO)};
    const double grace = isCancelled_ && !killedAt_ ? std::max(0.0, killAt_ - monotonicSeconds()) : 1;
    ::poll(waiting, std::size(waiting), std::min(kNap, static_cast<int>(grace * 1000) + 1));
}

bool Supervisor::hear() {
    constexpr int most = 64;  // then signals and limits have their turn
    try {
        for (int count = 0; count < most && mayWrite(); ++count) {
            auto message = worker_.channel().receive();
            if (!message) return false;
            take(*message);
        }
        return true;
    } catch (const Error&) {
        end(WorkerFault::Nonsense);
        return false;
    }
}

void Supervisor::take(Message& message) {
    switch (message.kind) {
        case Message::Kind::Sign:
            return takeSign(message);
        case Message::Kind::Failure:
            told_ = message.error();
            return;
        case Message::Kind::Done:
            code_ = static_cast<int>(message.integer(0));
            return;
        case Message::Kind::Plan:
            watch_.plan(message.integer(0), message.integer(1));
            return;
        case Message::Kind::Download:
            watch_.sign();
            break;
        case Message::Kind::Output:
            for (std::string& text : message.fields) makeHarmless(text);
            break;
        case Message::Kind::Progress:
            takeProgress(message.integer(0), message.integer(1));
            break;
        default:
            break;
    }
    listener_(message);
}

void Supervisor::takeSign(const Message& sign) {
    watch_.sign();
    const std::string &stage = sign.field(0), &file = sign.field(1);
    if (!stage.empty()) begin({stage, "", blameOf(sign.integer(2))});
    if (file.empty()) return;
    activity_.file = file;
    activity_.blame = blameOf(sign.integer(2));
}

void Supervisor::begin(const WorkerActivity& activity) {
    activity_ = activity;
    log::info("stage: " + activity.stage);
}

/// What takes long between two frames are the template's shaders, or files that are opened meanwhile.
void Supervisor::takeProgress(int64_t frames, int64_t total) {
    if (frames <= frames_) return;
    frames_ = frames;
    watch_.sign();
    const bool isDrawing = activity_.stage.starts_with(kDrawing);
    if (total > 0 && frames >= total) {
        if (isDrawing) activity_ = {"finishing", "", ErrorKind::Template};
        return;
    }
    if (!isDrawing) begin({kDrawing, "", ErrorKind::Template});
    activity_ = {std::string(kDrawing) + " frame " + std::to_string(frames), "", ErrorKind::Template};
}

bool Supervisor::passErrorsOn() {
    char buffer[4096];
    const ssize_t size = ::read(worker_.errors(), buffer, sizeof buffer);
    if (size == 0 || (size < 0 && errno != EAGAIN)) hasErrors_ = false;
    if (size <= 0) return false;
    std::string text(buffer, static_cast<size_t>(size));
    makeHarmless(text);
    std::fwrite(text.data(), 1, text.size(), stderr);
    return true;
}

void Supervisor::readSignals() {
    signalfd_siginfo signal{};
    pollfd waiting{signals_, POLLIN, 0};
    while (::poll(&waiting, 1, 0) > 0 && ::read(signals_, &signal, sizeof signal) == sizeof signal)
        signal.ssi_signo == SIGTSTP ? pause() : cancel();
}

void Supervisor::cancel() {
    if (isCommitted_) {
        isLate_ = true;
    } else if (!isCancelled_) {
        isCancelled_ = true;
        killAt_ = monotonicSeconds() + kGrace;
        worker_.signal(SIGTERM);
    } else {
        killAt_ = 0;
    }
}

/// The terminal's Ctrl-Z reaches the supervisor alone.
void Supervisor::pause() {
    const double start = monotonicSeconds();
    worker_.signal(SIGSTOP);
    std::raise(SIGSTOP);
    worker_.signal(SIGCONT);
    lookedAt_ = monotonicSeconds();
    watch_.leaveOut(lookedAt_ - start);
}

void Supervisor::watchLimits() {
    const double now = monotonicSeconds();
    if (fault_ != WorkerFault::None || now < lookedAt_ + kLooking) return;
    // A worker that waits for the reader of its output is not at fault.
    if (!mayWrite()) watch_.leaveOut(now - lookedAt_);
    lookedAt_ = now;
    const WorkerWatch::Finding finding = watch_.look();
    if (finding.fault != WorkerFault::None) end(finding.fault, finding.limit);
}

void Supervisor::end(WorkerFault fault, uint64_t limit) {
    if (fault_ != WorkerFault::None) return;
    fault_ = fault;
    limit_ = limit;
    kill();
}

/// What the worker has said before its end, as far as somebody reads it. Not until the channel is closed, and
/// not without end: where nothing forbids processes, one that it has started may hold on to it.
void Supervisor::drain() {
    constexpr int most = 1000;  // more than channel and pipe hold
    bool isMore = true;
    for (int turn = 0; isMore && turn < most && fault_ != WorkerFault::Nonsense;) {
        readSignals();
        if (mayWrite()) {
            isMore = hear();
            ++turn;
        } else if (isCancelled_ || isLate_) {
            return;
        } else {
            wait();
        }
    }
    for (int turn = 0; turn < most && mayWrite() && passErrorsOn(); ++turn) {
    }
}

int Supervisor::outcome(int status) {
    if (activity_.file.empty()) activity_.file = source_;
    if (isCancelled_ && !isCommitted_) throw Error(ErrorKind::Cancelled, "cancelled");
    if (fault_ != WorkerFault::None) throw errorOfWorkerEnd(status, fault_, limit_, activity_);
    if (told_) throw Error(*told_);
    if (code_) return *code_;
    throw errorOfWorkerEnd(status, WorkerFault::None, 0, activity_);
}

}  // namespace platform
