#include "platform/fence/Attempts.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include "platform/base/File.h"

namespace platform {

namespace {

using Targets = BreakOutTargets;

constexpr size_t kMebibyte = size_t{1} << 20;

std::string unless(bool succeeded) { return succeeded ? "" : std::strerror(errno); }

std::string openSecret(const std::string& path) {
    const FileHandle file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char letter = 0;
    return unless(file && ::read(file.descriptor(), &letter, 1) == 1);
}

std::string readSecret(const Targets& targets) { return openSecret(targets.secret); }

std::string readSecretByLink(const Targets& targets) {
    const std::string link = targets.inside / "link";
    if (::symlink(targets.secret.c_str(), link.c_str()) == 0) return openSecret(link);
    const std::string refused = std::strerror(errno);
    return ::link(targets.secret.c_str(), link.c_str()) == 0 ? openSecret(link) : refused;
}

std::string readSupervisorsMemory(const Targets&) {
    return openSecret("/proc/" + std::to_string(::getppid()) + "/environ");
}

std::string writeOutside(const Targets& targets) {
    const std::string path = targets.outside / "written";
    const FileHandle file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    return unless(static_cast<bool>(file));
}

std::string letEverybodyRead(const Targets& targets) {
    return unless(::chmod(targets.secret.c_str(), 0666) == 0);
}

std::string removeSecret(const Targets& targets) { return unless(::unlink(targets.secret.c_str()) == 0); }

std::string connectToLoopback(const Targets& targets) {
    const FileHandle end(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(targets.port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return unless(
        end && ::connect(end.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
}

std::string sendDatagram(const Targets&) {
    return unless(static_cast<bool>(FileHandle(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))));
}

std::string reachLocalService(const Targets&) {
    return unless(static_cast<bool>(FileHandle(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))));
}

std::string startProcess(const Targets&) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    if (child > 0) ::waitpid(child, nullptr, 0);
    return unless(child > 0);
}

/// Comes back only when it fails.
std::string startProgram(const Targets&) {
    ::execl("/bin/true", "true", nullptr);
    return unless(false);
}

std::string traceSupervisor(const Targets&) {
    return unless(::ptrace(PTRACE_SEIZE, ::getppid(), nullptr, nullptr) == 0);
}

std::string signalSupervisor(const Targets&) { return unless(::kill(::getppid(), SIGWINCH) == 0); }

/// The kernel signals whoever a pipe is said to belong to.
std::string signalSupervisorByPipe(const Targets&) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return unless(false);
    const FileHandle reading(ends[0]), writing(ends[1]);
    return unless(::fcntl(ends[0], F_SETOWN, ::getppid()) == 0 && ::fcntl(ends[0], F_SETSIG, SIGWINCH) == 0 &&
                  ::fcntl(ends[0], F_SETFL, O_ASYNC) == 0 && ::write(ends[1], "", 1) == 1);
}

std::string shareMemoryWithOthers(const Targets&) {
    const int memory = ::shmget(IPC_PRIVATE, 4096, 0600);
    if (memory >= 0) ::shmctl(memory, IPC_RMID, nullptr);
    return unless(memory >= 0);
}

std::string raiseLimits(const Targets&) {
    const rlimit endless{RLIM_INFINITY, RLIM_INFINITY};
    return unless(::setrlimit(RLIMIT_DATA, &endless) == 0);
}

std::string takeMemoryAtOnce(const Targets&) {
    void* const memory =
        ::mmap(nullptr, 8192 * kMebibyte, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return unless(memory != MAP_FAILED);
}

/// Shared memory, which no limit of the kernel counts, so that the supervisor has to see it.
std::string takeMemoryBitByBit(const Targets&) {
    for (size_t taken = 0; taken < 8192; ++taken) {
        void* const memory =
            ::mmap(nullptr, kMebibyte, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) return unless(false);
        std::memset(memory, 1, kMebibyte);
    }
    return {};
}

std::string openManyFiles(const Targets&) {
    std::vector<FileHandle> files;
    for (int count = 0; count < 10'000; ++count) {
        files.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!files.back()) return "after " + std::to_string(count) + ": " + std::strerror(errno);
    }
    return {};
}

std::string writeLargeFile(const Targets& targets) {
    std::signal(SIGXFSZ, SIG_IGN);
    const FileHandle file(::open((targets.inside / "large").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    if (!file) return unless(false);
    return unless(::pwrite(file.descriptor(), "", 1, off_t{1} << 40) == 1);
}

std::string loopForEver(const Targets&) {
    for (std::atomic<unsigned> turn = 0;; ++turn) {
    }
}

std::string sleepForEver(const Targets&) {
    for (;;) ::pause();
}

constexpr std::array kAttempts{
    BreakOutAttempt{"read a private key", Wall::Files, readSecret},
    BreakOutAttempt{"read it through a link", Wall::Files, readSecretByLink},
    BreakOutAttempt{"remove it", Wall::Files, removeSecret},
    BreakOutAttempt{"write outside its folder", Wall::Files, writeOutside},
    BreakOutAttempt{"read the supervisor's environment", Wall::Files, readSupervisorsMemory},
    BreakOutAttempt{"let everybody read it", Wall::SystemCalls, letEverybodyRead},
    BreakOutAttempt{"connect to the loopback", Wall::SystemCalls, connectToLoopback},
    BreakOutAttempt{"send a datagram", Wall::SystemCalls, sendDatagram},
    BreakOutAttempt{"talk to a local service", Wall::SystemCalls, reachLocalService},
    BreakOutAttempt{"start a process", Wall::SystemCalls, startProcess},
    BreakOutAttempt{"start a program", Wall::SystemCalls, startProgram},
    BreakOutAttempt{"trace the supervisor", Wall::SystemCalls, traceSupervisor},
    BreakOutAttempt{"signal the supervisor", Wall::SystemCalls, signalSupervisor},
    BreakOutAttempt{"signal the supervisor by a pipe", Wall::SystemCalls, signalSupervisorByPipe},
    BreakOutAttempt{"share memory with others", Wall::SystemCalls, shareMemoryWithOthers},
    BreakOutAttempt{"raise its limits", Wall::SystemCalls, raiseLimits},
    BreakOutAttempt{"take 8 GiB at once", Wall::Limits, takeMemoryAtOnce},
    BreakOutAttempt{"take 8 GiB bit by bit", Wall::Limits, takeMemoryBitByBit},
    BreakOutAttempt{"open 10000 files", Wall::Limits, openManyFiles},
    BreakOutAttempt{"write 1 TiB", Wall::Limits, writeLargeFile},
    BreakOutAttempt{"loop for ever", Wall::Limits, loopForEver},
    BreakOutAttempt{"sleep for ever", Wall::Limits, sleepForEver},
};

}  // namespace

std::span<const BreakOutAttempt> breakOutAttempts() { return kAttempts; }

}  // namespace platform
