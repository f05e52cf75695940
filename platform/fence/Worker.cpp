#include "platform/fence/Worker.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "platform/fence/WorkerLimits.h"

namespace platform {

namespace {

size_t threadsOfThisProcess() {
    std::error_code failure;
    size_t count = 0;
    for (auto entry = std::filesystem::directory_iterator("/proc/self/task", failure);
         !failure && entry != std::filesystem::end(entry); entry.increment(failure))
        ++count;
    return count;
}

void closeAllBut(int kept) {
    constexpr unsigned first = STDERR_FILENO + 1, last = ~0U;
    const auto own = static_cast<unsigned>(kept);
    if (own > first) ::syscall(SYS_close_range, first, own - 1, 0);
    if (::syscall(SYS_close_range, own + 1, last, 0) == 0) return;
    constexpr unsigned usual = 4096;
    for (unsigned each = first; each < usual; ++each)
        if (each != own) ::close(static_cast<int>(each));
}

/// The kernel takes the worker first when memory runs out.
void offerItself() {
    const FileHandle file(::open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    if (file) static_cast<void>(!::write(file.descriptor(), "500", 3));
}

}  // namespace

Worker::Worker(const Body& body) {
    // A sanitizer has threads of its own, and cares for them.
    if (!isSanitized() && threadsOfThisProcess() > 1)
        throw Error(ErrorKind::Failed, "a worker cannot be started while threads run");
    auto ends = Channel::pair();
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) throw errnoError(errno, "cannot start a worker", "");
    errors_ = FileHandle(pipe[0]);
    FileHandle writing(pipe[1]);
    ::fcntl(errors_.descriptor(), F_SETFL, O_NONBLOCK);
    std::fflush(nullptr);
    const pid_t supervisor = ::getpid();
    process_ = ::fork();
    if (process_ < 0) throw errnoError(errno, "cannot start a worker", "");
    if (process_ == 0) runChild(body, std::move(ends.second), std::move(writing), supervisor);
    channel_ = std::make_unique<Channel>(std::move(ends.first));
    end_ = FileHandle(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
}

void Worker::runChild(const Body& body, Channel channel, FileHandle errors, pid_t supervisor) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    if (::getppid() != supervisor) ::_exit(1);
    ::setsid();
    const FileHandle nothing(::open("/dev/null", O_RDONLY));
    ::dup2(nothing.descriptor(), STDIN_FILENO);
    ::dup2(errors.descriptor(), STDOUT_FILENO);
    ::dup2(errors.descriptor(), STDERR_FILENO);
    closeAllBut(channel.descriptor());
    offerItself();
    int code = 1;
    try {
        code = body(channel);
    } catch (...) {
    }
    std::exit(code);
}

Worker::~Worker() {
    if (!status_ && !isAbandoned_) kill();
}

void Worker::signal(int number) const {
    if (status_) return;
    ::kill(-process_, number);
    ::kill(process_, number);
}

std::optional<int> Worker::ended() {
    int status = 0;
    if (!status_ && ::waitpid(process_, &status, WNOHANG) == process_) keep(status);
    return status_;
}

int Worker::kill() {
    signal(SIGKILL);
    int status = 0;
    while (!status_)
        if (::waitpid(process_, &status, 0) == process_ || errno != EINTR) keep(status);
    return *status_;
}

void Worker::keep(int status) {
    status_ = status;
    ::kill(-process_, SIGKILL);  // what it has left running
}

}  // namespace platform
