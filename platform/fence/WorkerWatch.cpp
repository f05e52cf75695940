#include "platform/fence/WorkerWatch.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <string_view>

#include "platform/base/Clock.h"
#include "platform/base/File.h"

namespace platform {

namespace {

/// The number behind a name in /proc/PID/status; 0 when there is none.
uint64_t valueOf(std::string_view status, std::string_view name) {
    const size_t at = status.find(name);
    if (at == std::string_view::npos) return 0;
    const size_t digits = status.find_first_of("0123456789", at + name.size());
    uint64_t value = 0;
    if (digits != std::string_view::npos)
        std::from_chars(status.data() + digits, status.data() + status.size(), value);
    return value;
}

bool isBeyond(double value, uint64_t limit) { return value > static_cast<double>(limit); }

}  // namespace

WorkerWatch::WorkerWatch(pid_t process, const WorkerLimits& limits)
    : process_(process),
      given_(limits),
      limits_(limits.forJob(0, 0)),
      start_(monotonicSeconds()),
      stepStart_(start_) {}

void WorkerWatch::sign() {
    stepStart_ = monotonicSeconds();
    stepCpu_ = cpuSeconds();
}

void WorkerWatch::leaveOut(double seconds) {
    start_ += seconds;
    stepStart_ += seconds;
}

void WorkerWatch::plan(int64_t frames, int64_t pixels) {
    // A template may say anything, and so may a worker.
    constexpr int64_t most = int64_t{1} << 40;
    frames_ = frames < 0 || frames_ < 0 ? -1 : std::min(frames_ + std::min(frames, most), most);
    pixels_ = std::max(pixels_, std::min(pixels, most));
    limits_ = given_.forJob(frames_, pixels_);
    rlimit own{}, files{};
    if (::getrlimit(RLIMIT_FSIZE, &own) != 0 || ::prlimit(process_, RLIMIT_FSIZE, nullptr, &files) != 0)
        return;
    files.rlim_cur = std::min<rlim_t>({own.rlim_cur, files.rlim_max, limits_.fileBytes});
    ::prlimit(process_, RLIMIT_FSIZE, &files, nullptr);
}

double WorkerWatch::cpuSeconds() const {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(process_, &clock) != 0 || ::clock_gettime(clock, &time) != 0) return stepCpu_;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void WorkerWatch::readStatus() {
    const std::string name = "/proc/" + std::to_string(process_) + "/status";
    const FileHandle file(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
    char text[4096];
    const ssize_t size = file ? ::read(file.descriptor(), text, sizeof text) : 0;
    if (size <= 0) return;
    const std::string_view status(text, static_cast<size_t>(size));
    constexpr uint64_t kilo = 1024;
    bytes_ = kilo *
             (valueOf(status, "\nRssAnon:") + valueOf(status, "\nRssShmem:") + valueOf(status, "\nVmSwap:"));
    peakBytes_ = std::max(peakBytes_, bytes_);
    threads_ = valueOf(status, "\nThreads:");
}

WorkerWatch::Finding WorkerWatch::look() {
    readStatus();
    const double now = monotonicSeconds(), cpu = cpuSeconds();
    if (bytes_ > limits_.memoryBytes && !isSanitized()) return {WorkerFault::Memory, limits_.memoryBytes};
    if (isBeyond(cpu, limits_.cpuSeconds)) return {WorkerFault::Cpu, limits_.cpuSeconds};
    if (isBeyond(cpu - stepCpu_, limits_.stepCpuSeconds))
        return {WorkerFault::StepCpu, limits_.stepCpuSeconds};
    if (isBeyond(now - start_, limits_.wallSeconds)) return {WorkerFault::Time, limits_.wallSeconds};
    if (isBeyond(now - stepStart_, limits_.stepSeconds)) return {WorkerFault::StepTime, limits_.stepSeconds};
    if (threads_ > limits_.threads) return {WorkerFault::Threads, limits_.threads};
    return {};
}

}  // namespace platform
