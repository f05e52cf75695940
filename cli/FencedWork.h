// Work that reads foreign files or compiles foreign shaders, done in processes behind the fence.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "app/data/QVDataManager.h"
#include "cli/Console.h"
#include "cli/JobSettings.h"
#include "cli/SignalQueue.h"
#include "cli/SignalWatch.h"
#include "platform/fence/Channel.h"
#include "platform/fence/Landlock.h"

namespace multiscene::cli {

/// What a worker is to change in the catalogue. When it dies without a word, another one finds out what
/// became of it.
struct CatalogueChange {
    /// In the worker, with everything put right that was left. Nothing while that cannot be done.
    std::function<std::optional<bool>(QVDataManager&)> isMade;
    std::function<void(Console&)> tell;  ///< in the program: what the worker has not said
};

/// What one worker is started with.
struct Errand {
    std::string source;            ///< named when the worker ends before it has opened anything
    platform::Reach reach;         ///< besides what every worker reaches: what the user named
    std::filesystem::path folder;  ///< of the job, where the worker may write; empty: nowhere
    int connection = -1;           ///< an end of a channel that the worker is given; stays the caller's
    std::optional<CatalogueChange> change =
        {};  ///< set: it writes in the data home, and reads no foreign file
};

/// What a worker works with.
struct Workplace {
    Console& console;
    std::stop_token stop;  ///< requested by a signal
    /// Has the program do something, and waits for it. Throws what that throws.
    std::function<void(const std::vector<std::string>&)> ask;
    platform::FileHandle connection = {};  ///< the one of the errand
};

/// The pieces of work of one command, one worker after the other; the program itself stands beside them. Made
/// while the program has one thread, before it makes anything that a signal could leave behind.
///
/// Where the user wants no fence the work is done in the program itself.
class FencedWork {
  public:
    using Work = std::function<int(Workplace&)>;
    /// In the program: does what a worker asks for, which may be anything. Throws platform::Error.
    using Answer = std::function<void(const std::vector<std::string>& request)>;

    FencedWork(Console& console, const JobSettings& settings);

    /// Does the work in a worker of its own and returns its exit code. Nothing that the work leaves in memory
    /// comes back; what it leaves in the job's folder may be anything. When one fails that changes the
    /// catalogue, another one puts right what it has left; one that died when the change was made has done
    /// its work. Throws platform::Error: what the work threw, what became of the worker, or Cancelled.
    int run(const Errand& errand, const Work& work, const Answer& answer = {});

    /// A signal has come. For what the program itself waits for; the next run() then ends at once.
    bool isCancelled() const;

    /// From within an answer: the command's result stands, a signal no longer ends the work.
    void commit() { isCommitted_ = true; }
    /// The result of the last run() stands, whatever that threw.
    bool isCommitted() const { return isCommitted_; }

  private:
    int runHere(const Errand& errand, const Work& work, const Answer& answer);
    int runFenced(const Errand& errand, const platform::WorkerLimits& limits, const Work& work,
                  const Answer& answer);
    std::optional<bool> recoverCatalogue(const CatalogueChange& change);
    platform::Message answerTo(const platform::Message& request, const Answer& answer);
    std::string copyOfCatalogue();

    Console& console_;
    const JobSettings& settings_;
    std::unique_ptr<SignalQueue> signals_;
    std::unique_ptr<SignalWatch> watch_;
    std::shared_ptr<QVDataManager> catalogue_;  ///< once a worker has asked for it
    bool isCommitted_ = false;
    bool hasDied_ = false;     ///< the worker of the last run, without saying what came of its work
    bool hasWritten_ = false;  ///< it has said something to the user
    int copies_ = 0;           ///< of the catalogue, for the worker that runs
};

}  // namespace multiscene::cli
