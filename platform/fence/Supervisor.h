// Stands beside a worker until it has ended.
#pragma once

#include <functional>

#include "platform/fence/Worker.h"
#include "platform/fence/WorkerWatch.h"

namespace platform {

/// Hears the worker, watches its limits, obeys signals, writes for it. One thread; while run() runs, SIGINT,
/// SIGTERM, SIGHUP and SIGTSTP are blocked and `signals`, a signalfd for them, is read.
///
/// A signal ends the worker: it is asked (SIGTERM) and after 0.25 s, or at a second signal, killed. Standard
/// output that nobody reads holds the worker up, never the supervisor; such time, and that of a pause, is not
/// the worker's. What it writes is passed on with control characters replaced.
class Supervisor {
  public:
    /// A message of the kinds Fence, Progress, Download, Output or Request. A request is answered by it. The
    /// first two fields of a Progress are the frames done, of which only more are a sign of life, and all
    /// frames.
    using Listener = std::function<void(Message&)>;

    Supervisor(Worker& worker, const WorkerLimits& limits, int signals, Listener listener);

    /// Until the worker has ended; returns the exit code that it told. Throws Error: what the worker told,
    /// what became of it (see errorOfWorkerEnd), or Cancelled after a signal.
    int run();

    /// What is named while the worker has opened nothing, and while it draws.
    void setSource(const std::string& source) { source_ = source; }
    /// The job's result stands: a signal no longer ends the worker, unless nobody reads what it writes.
    void commit() { isCommitted_ = true; }

    /// Whether the worker has said what came of its work.
    bool hasOutcome() const { return told_ || code_; }
    const WorkerActivity& activity() const { return activity_; }
    /// Why the worker was ended; None when it ended by itself, or by a signal of somebody else.
    WorkerFault fault() const { return fault_; }
    uint64_t peakBytes() const { return watch_.peakBytes(); }

  private:
    void wait();
    /// True when there may be more at once.
    bool hear();
    void take(Message& message);
    void takeSign(const Message& sign);
    void begin(const WorkerActivity& activity);
    void takeProgress(int64_t frames, int64_t total);
    /// False when there is nothing now.
    bool passErrorsOn();
    void readSignals();
    void cancel();
    void pause();
    void watchLimits();
    void end(WorkerFault fault, uint64_t limit = 0);
    void kill();
    bool isLost() const;
    void drain();
    int outcome(int status);

    Worker& worker_;
    WorkerWatch watch_;
    int signals_;
    Listener listener_;
    WorkerActivity activity_;
    std::string source_;
    int64_t frames_ = -1;
    std::optional<Error> told_;
    std::optional<int> code_;
    WorkerFault fault_ = WorkerFault::None;
    uint64_t limit_ = 0;
    bool isCommitted_ = false, isCancelled_ = false, hasErrors_ = true;
    bool isLate_ = false;  ///< a signal has come when the result stood
    std::optional<double> killedAt_;
    double killAt_ = 0, lookedAt_;
};

}  // namespace platform
