#include "platform/media/ThreadCpu.h"

#include <pthread.h>
#include <time.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace platform {

namespace {

double secondsOf(clockid_t clock) {
    timespec time{};
    if (::clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// The kernel's own encoding of the CPU clock of a thread, which pthread_getcpuclockid gives only for known
// pthreads.
clockid_t cpuClockOfThread(int threadId) {
    constexpr int kPerThread = 4, kScheduler = 2;
    return static_cast<clockid_t>(~static_cast<unsigned>(threadId) << 3 | kPerThread | kScheduler);
}

std::string nameOfTask(const std::filesystem::path& task) {
    std::string name;
    std::ifstream file(task / "comm");
    std::getline(file, name);
    return name;
}

}  // namespace

void nameThread(const std::string& name) { pthread_setname_np(pthread_self(), name.substr(0, 15).c_str()); }

double cpuSecondsOfThreadsNamed(const std::string& name) {
    double sum = 0;
    std::error_code failure;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", failure))
        if (nameOfTask(task.path()) == name)
            sum += secondsOf(cpuClockOfThread(std::atoi(task.path().filename().c_str())));
    return sum;
}

}  // namespace platform
