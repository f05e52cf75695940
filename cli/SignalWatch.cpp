#include "cli/SignalWatch.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

#include "app/Job/JobFolder.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

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
    thread_ = std::jthread([this](const std::stop_token& ended) { watch(ended); });
}

void SignalWatch::watch(const std::stop_token& ended) {
    const sigset_t signals = watchedSignals();
    constexpr timespec patience{0, 200'000'000};  // how soon the watch itself can end
    while (!ended.stop_requested()) {
        if (sigtimedwait(&signals, nullptr, &patience) < 0) continue;
        if (stop_.request_stop()) continue;
        JobFolder::removeAllOfThisProcess();
        ::_exit(static_cast<int>(platform::ErrorKind::Cancelled));
    }
}

}  // namespace multiscene::cli
