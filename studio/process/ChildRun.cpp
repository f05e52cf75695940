#include "studio/process/ChildRun.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

#include "platform/base/Error.h"
#include "platform/base/Json.h"
#include "studio/process/StartedChild.h"

namespace multiscene::studio {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr size_t kMostLine = 256 << 10;
constexpr uint64_t kMostOutput = 16 << 20;
constexpr milliseconds kGlance{50};  ///< where the kernel does not tell of the end

}  // namespace

ChildRun::ChildRun(ChildProgram::Spec spec, Lines lines)
    : spec_(std::move(spec)), lines_(std::move(lines)), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!wake_) throw platform::errnoError(errno, "cannot start a program", "");
}

ChildProgram::End ChildRun::run() {
    try {
        start();
        watch();
    } catch (const platform::Error& failure) {
        result_.fault = failure.what();
    }
    if (!status_) return result_;
    if (WIFEXITED(*status_)) result_.exitCode = WEXITSTATUS(*status_);
    if (WIFSIGNALED(*status_)) result_.signal = WTERMSIG(*status_);
    return result_;
}

void ChildRun::cancel() {
    constexpr uint64_t one = 1;
    static_cast<void>(!::write(wake_.descriptor(), &one, sizeof one));
}

void ChildRun::start() {
    StartedChild child = startChild(spec_);
    spec_.connection.reset();
    process_ = child.process;
    output_ = std::move(child.output);
    end_ = platform::FileHandle(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
    if (spec_.most.count() > 0) lateAt_ = steady_clock::now() + spec_.most;
}

void ChildRun::watch() {
    while (!hasEnded()) {
        pollfd waiting[] = {{output_.descriptor(), POLLIN, 0},
                            {wake_.descriptor(), POLLIN, 0},
                            {end_.descriptor(), POLLIN, 0}};
        ::poll(waiting, std::size(waiting), patience());
        hearCancel();
        escalate();
        if (output_ && !readSome()) output_.reset();
    }
    while (output_ && result_.fault.empty() && readSome()) {
    }
}

/// For poll(): milliseconds until the next thing that nobody tells of.
int ChildRun::patience() const {
    std::optional<Time> next = killAt_ ? killAt_ : lateAt_;
    if (!end_) next = std::min(next.value_or(Time::max()), steady_clock::now() + kGlance);
    if (!next) return -1;
    const auto left = std::chrono::duration_cast<milliseconds>(*next - steady_clock::now()).count() + 1;
    return static_cast<int>(std::clamp<int64_t>(left, 0, INT32_MAX));
}

void ChildRun::hearCancel() {
    uint64_t count = 0;
    if (::read(wake_.descriptor(), &count, sizeof count) != sizeof count || killAt_) return;
    ::kill(process_, SIGTERM);
    killAt_ = steady_clock::now() + spec_.patience;
}

void ChildRun::endWith(const std::string& fault) {
    if (!result_.fault.empty()) return;
    result_.fault = fault;
    cancel();
}

void ChildRun::escalate() {
    const Time now = steady_clock::now();
    if (lateAt_ && now >= *lateAt_) {
        lateAt_.reset();
        endWith("takes too long");
    }
    if (!killAt_ || now < *killAt_) return;
    ::kill(process_, SIGKILL);
    killAt_ = Time::max();
}

/// False at the end, and when there is nothing more of a child that has ended.
bool ChildRun::readSome() {
    char bytes[16 << 10];
    const ssize_t count = ::read(output_.descriptor(), bytes, sizeof bytes);
    if (count < 0) return (errno == EAGAIN || errno == EINTR) && !status_;
    if (count == 0) return false;
    readBytes_ += static_cast<uint64_t>(count);
    // Nothing more is kept of one that says too much, but it can go on until it is gone.
    if (readBytes_ > kMostOutput) endWith("says too much");
    if (!result_.fault.empty()) return true;
    unread_.append(bytes, static_cast<size_t>(count));
    take();
    return true;
}

void ChildRun::take() {
    size_t begin = 0;
    for (size_t end = 0; (end = unread_.find('\n', begin)) != std::string::npos; begin = end + 1)
        takeLine(std::string_view(unread_).substr(begin, end - begin));
    unread_.erase(0, begin);
    if (unread_.size() > kMostLine) endWith("says too much");
    if (!values_.empty()) lines_(std::exchange(values_, {}));
}

void ChildRun::takeLine(std::string_view line) {
    if (!line.starts_with('{') || line.size() > kMostLine) return;
    try {
        platform::Value value = platform::parseJson(line, "a line of a child");
        if (value.string("event") == "error") result_.error = value;
        values_.push_back(std::move(value));
    } catch (const platform::Error&) {
        // A line cut short by a crash.
    }
}

bool ChildRun::hasEnded() {
    int status = 0;
    if (!status_ && ::waitpid(process_, &status, WNOHANG) == process_) status_ = status;
    return status_.has_value();
}

}  // namespace multiscene::studio
