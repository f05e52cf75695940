#include "cli/SignalQueue.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <csignal>

namespace multiscene::cli {

SignalQueue::SignalQueue() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGTSTP}) sigaddset(&signals, number);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signals_ = platform::FileHandle(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signals_) throw platform::errnoError(errno, "cannot watch for signals", "");
}

}  // namespace multiscene::cli
