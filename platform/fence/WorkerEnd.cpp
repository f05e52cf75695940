#include "platform/fence/WorkerEnd.h"

#include <sys/wait.h>

#include <csignal>
#include <cstring>

namespace platform {

namespace {

std::string faultText(WorkerFault fault, uint64_t limit) {
    const std::string number = std::to_string(limit);
    switch (fault) {
        case WorkerFault::Memory:
            return "needs more than " + std::to_string(limit >> 20) + " MiB of memory (maxJobMemory)";
        case WorkerFault::Cpu:
            return "needs more than " + number + " s of processor time (maxJobCpuSeconds)";
        case WorkerFault::Time:
            return "takes longer than " + number + " s (maxJobSeconds)";
        case WorkerFault::StepCpu:
            return "does not get on: " + number + " s of processor time for one step (maxStepCpuSeconds)";
        case WorkerFault::StepTime:
            return "does not get on: no sign of life for " + number + " s (maxStepSeconds)";
        case WorkerFault::Threads:
            return "has more than " + number + " threads (maxJobThreads)";
        case WorkerFault::Nonsense:
            return "says what nobody understands";
        case WorkerFault::None:
            break;
    }
    return {};
}

const char* crashName(int number) {
    switch (number) {
        case SIGSEGV:
            return "segmentation fault";
        case SIGBUS:
            return "bus error";
        case SIGILL:
            return "illegal instruction";
        case SIGFPE:
            return "arithmetic fault";
        case SIGABRT:
            return "aborted";
        case SIGSYS:
            return "forbidden system call";
        default:
            return ::strsignal(number);
    }
}

std::string endText(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        if (number == SIGXCPU) return "needs more processor time than it may have (maxJobCpuSeconds)";
        if (number == SIGKILL)
            return "was killed from outside, perhaps because the machine has no more memory";
        return std::string("crashed (") + crashName(number) + ")";
    }
    return "ended without a result (exit code " + std::to_string(WEXITSTATUS(status)) + ")";
}

/// " while judging, after opening FILE".
std::string placeOf(const WorkerActivity& activity) {
    return " while " + (activity.stage.empty() ? std::string("starting") : activity.stage);
}

bool endedFromOutside(int status, WorkerFault fault) {
    return fault == WorkerFault::None && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

}  // namespace

Error errorOfWorkerEnd(int status, WorkerFault fault, uint64_t limit, const WorkerActivity& activity) {
    constexpr int passing = static_cast<int>(ErrorKind::Transient);
    if (fault == WorkerFault::None && WIFEXITED(status) && WEXITSTATUS(status) == passing)
        return Error(ErrorKind::Transient, "out of memory" + placeOf(activity), activity.file);
    const std::string what = fault == WorkerFault::None ? endText(status) : faultText(fault, limit);
    const ErrorKind kind = endedFromOutside(status, fault) ? ErrorKind::Transient : activity.blame;
    return Error(kind, "the job " + what + placeOf(activity), activity.file);
}

}  // namespace platform
