#include "renderLoop/RunLoop.h"

#include <chrono>
#include <utility>

#include "platform/base/CurrentError.h"

namespace multiscene {

static constexpr double pausedTurnSeconds = 0.1;

std::optional<platform::Error> errorOf(const std::function<void()>& task) {
    try {
        task();
        return std::nullopt;
    } catch (...) {
        return platform::currentError();
    }
}

void RunLoop::start(uint64_t run) {
    queue_.async([this, run] { loop(run); });
}

void RunLoop::perform(const std::function<void()>& task) {
    std::optional<platform::Error> error;
    queue_.sync([&] {
        error = errorOf([&] {
            work_.prepare();
            task();
        });
    });
    if (error) throw platform::Error(*error);
}

// Ending, under the lock

void RunLoop::endRuns() {
    endedRuns_ = startedRuns_.load();
    wakeSignal_.notify_all();
    work_.interruptTurn();
}

void RunLoop::interrupt() {
    const std::lock_guard lock(mutex_);
    endRuns();
}

void RunLoop::endRunsAndTakeDown(CompletionBlock completion) {
    endRuns();
    queue_.async([this, completion = std::move(completion)] {
        work_.takeDown();
        callBack(completion);
    });
}

void RunLoop::cancel(CompletionBlock completion) {
    const std::lock_guard lock(mutex_);
    endRunsAndTakeDown(std::move(completion));
}

void RunLoop::finish(CompletionBlock completion) {
    const std::lock_guard lock(mutex_);
    if (!isEnded(currentRun_)) endRunsAndTakeDown(std::move(completion));
}

void RunLoop::restart(RestartBlock completion) {
    const std::lock_guard lock(mutex_);
    endRuns();
    queue_.async([this, run = ++startedRuns_, completion = std::move(completion)] {
        callBack([&] {
            work_.prepare();
            work_.startOver();
            if (completion) completion(run);
        });
    });
}

void RunLoop::resume() {
    isPaused_ = false;
    const std::lock_guard lock(mutex_);
    wakeSignal_.notify_all();
}

// Turns

void RunLoop::loop(uint64_t run) {
    currentRun_ = run;
    const auto error = errorOf([&] {
        if (isEnded(run)) return;
        work_.prepare();
        while (!isEnded(run)) {
            if (isPaused_)
                rest(run, pausedTurnSeconds);
            else
                work_.takeTurn(run);
        }
    });
    if (!error) return;
    const bool wasEnded = isEnded(run);
    work_.takeDown();
    if (!wasEnded) work_.runFailed(*error);
}

void RunLoop::rest(uint64_t run, double seconds) {
    if (seconds <= 0) return;
    std::unique_lock lock(mutex_);
    const bool wasPaused = isPaused_;
    wakeSignal_.wait_for(lock, std::chrono::duration<double>(seconds),
                         [&] { return isEnded(run) || isPaused_ != wasPaused; });
}

/// Nothing may escape into the queue: what fails outside a run is told as a failed run.
void RunLoop::callBack(const CompletionBlock& block) {
    if (!block) return;
    const auto error = errorOf(block);
    if (!error) return;
    work_.takeDown();
    work_.runFailed(*error);
}

}  // namespace multiscene
