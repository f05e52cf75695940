#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

#include "platform/base/DispatchQueue.h"
#include "platform/base/Error.h"

namespace multiscene {

/// The render queue and the runs that occupy it, one after another. A run takes turns until it is ended: by
/// its work, by somebody who cancels it or starts it again, or by a failure; who comes first has the say.
/// Runs are numbered from 1: ending reaches every run started before it and none started later. Operations
/// may be called from any thread, unless they say otherwise.
class RunLoop {
  public:
    using CompletionBlock = std::function<void()>;
    using RestartBlock = std::function<void(uint64_t run)>;

    /// What the runs do, on the render queue, but for interruptTurn().
    class Work {
      public:
        /// Before a run's first turn, and before whatever else uses what the runs use.
        virtual void prepare() = 0;
        virtual void takeTurn(uint64_t run) = 0;
        /// Ends the waiting of a turn that waits for others. Any thread.
        virtual void interruptTurn() = 0;
        /// Gives up what the ended run has made, but not what it was prepared with.
        virtual void startOver() = 0;
        /// Gives up everything. May run twice.
        virtual void takeDown() = 0;
        /// A run has failed that nobody has ended; everything was taken down.
        virtual void runFailed(const platform::Error& error) = 0;

      protected:
        ~Work() = default;
    };

    /// The work outlives this.
    explicit RunLoop(Work& work) : work_(work) {}

    /// Starts a run.
    void start() { start(++startedRuns_); }
    /// Starts the run that restart() announced, unless it was ended since.
    void start(uint64_t run);
    /// Ends the runs started so far after their current turn, takes them down and calls back, once, on the
    /// queue.
    void cancel(CompletionBlock completion);
    /// The same, from within a turn, which ends by it; nothing when the run was ended before.
    void finish(CompletionBlock completion);
    /// Ends the runs, starts over and calls back on the queue with the run that is to be started then;
    /// ending reaches that run already.
    void restart(RestartBlock completion);
    /// Ends the runs; nothing follows.
    void interrupt();
    void pause() { isPaused_ = true; }
    void resume();
    bool isPaused() const { return isPaused_; }

    /// Runs a prepared task on the queue and waits; what it throws is thrown here. Waits for the end of a run
    /// that is under way.
    void perform(const std::function<void()>& task);
    platform::DispatchQueue& queue() { return queue_; }

    /// Rests within a turn, until the run is ended, paused or resumed at most.
    void rest(uint64_t run, double seconds);

  private:
    bool isEnded(uint64_t run) const { return endedRuns_ >= run; }
    void endRuns();
    void endRunsAndTakeDown(CompletionBlock completion);
    void loop(uint64_t run);
    void callBack(const CompletionBlock& block);

    Work& work_;
    std::atomic<uint64_t> startedRuns_{0}, endedRuns_{0};
    uint64_t currentRun_ = 0;  // render queue
    std::atomic<bool> isPaused_{false};
    // What follows a run is queued under the lock that the run is ended under, so that no tear-down hits a
    // later one.
    std::mutex mutex_;
    std::condition_variable wakeSignal_;
    platform::DispatchQueue queue_{"qvglview time source queue"};  // last: joined first
};

/// What a task threw, as the error that a user can be shown.
std::optional<platform::Error> errorOf(const std::function<void()>& task);

}  // namespace multiscene
