#include "cli/SignalWatch.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "app/job/JobFolder.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

using platform::FileHandle;

namespace {

sigset_t watchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
    return signals;
}

}  // namespace

SignalWatch::SignalWatch() {
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signals_ = FileHandle(::signalfd(-1, &signals, SFD_CLOEXEC));
    ended_ = FileHandle(::eventfd(0, EFD_CLOEXEC));
    if (!signals_ || !ended_) throw platform::errnoError(errno, "cannot watch for signals", "");
    thread_ = std::thread([this] { watch(); });
}

SignalWatch::~SignalWatch() {
    ::eventfd_write(ended_.descriptor(), 1);
    thread_.join();
}

void SignalWatch::watch() {
    pollfd waiting[] = {{ended_.descriptor(), POLLIN, 0}, {signals_.descriptor(), POLLIN, 0}};
    while (waiting[0].revents == 0) {
        if (::poll(waiting, 2, -1) < 0 || waiting[1].revents == 0) continue;
        signalfd_siginfo signal{};
        if (::read(signals_.descriptor(), &signal, sizeof signal) != sizeof signal) continue;
        if (stop_.request_stop()) continue;
        JobFolder::removeAllOfThisProcess();
        ::_exit(static_cast<int>(platform::ErrorKind::Cancelled));
    }
}

}  // namespace multiscene::cli
