#include "studio/process/ChildProgram.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/base/Paths.h"
#include "studio/process/ChildRun.h"

namespace multiscene::studio {

/// Between the object and its thread, and with the tasks on the queue.
class ChildProgram::Run {
  public:
    Run(platform::DispatchQueue& queue, Line line, Ended ended)
        : queue_(queue), line_(std::move(line)), ended_(std::move(ended)) {}

    void start(const std::shared_ptr<Run>& self, Spec spec) {
        try {
            child_ = std::make_unique<ChildRun>(
                std::move(spec),
                [this, self](std::vector<platform::Value> lines) { deliver(self, std::move(lines)); });
            thread_ = std::thread([this, self] { tellEnd(self, child_->run()); });
        } catch (const std::exception& failure) {
            // No more files or threads: that is heard in its turn, as is what goes wrong a moment later.
            End end;
            end.fault = failure.what();
            tellEnd(self, end);
        }
    }

    void cancel() {
        if (child_) child_->cancel();
    }

    /// The queue.
    void close() {
        isClosed_ = true;
        cancel();
        {
            const std::lock_guard lock(mutex_);
            isWaiting_ = false;
        }
        delivered_.notify_one();
        if (thread_.joinable()) thread_.join();
        child_.reset();
    }

  private:
    void tellEnd(const std::shared_ptr<Run>& self, const End& end) {
        queue_.async([this, self, end] {
            if (isClosed_) return;
            const Ended ended = std::move(ended_);
            ended(end);
        });
    }

    /// The thread: waits until they were taken, so that a program that never stops talking is not heard
    /// faster than it is listened to.
    void deliver(const std::shared_ptr<Run>& self, std::vector<platform::Value> lines) {
        std::unique_lock lock(mutex_);
        if (isClosed_) return;
        isWaiting_ = true;
        queue_.async([this, self, lines = std::move(lines)] {
            for (const platform::Value& line : lines)
                if (!isClosed_) line_(line);
            {
                const std::lock_guard taken(mutex_);
                isWaiting_ = false;
            }
            delivered_.notify_one();
        });
        delivered_.wait(lock, [this] { return !isWaiting_; });
    }

    platform::DispatchQueue& queue_;
    Line line_;
    Ended ended_;
    std::unique_ptr<ChildRun> child_;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable delivered_;
    bool isWaiting_ = false;
    std::atomic<bool> isClosed_{false};
};

ChildProgram::ChildProgram(platform::DispatchQueue& queue, Spec spec, Line line, Ended ended)
    : run_(std::make_shared<Run>(queue, std::move(line), std::move(ended))) {
    run_->start(run_, std::move(spec));
}

ChildProgram::~ChildProgram() { run_->close(); }

void ChildProgram::cancel() { run_->cancel(); }

ChildProgram::Spec programRun(const StudioSettings& settings, std::vector<std::string> words) {
    ChildProgram::Spec spec;
    spec.program = settings.program;
    // It may work in another folder.
    spec.environment["MULTISCENE_RESOURCES"] =
        std::filesystem::absolute(platform::resourcesFolder()).string();
    spec.arguments = {"--json", "--home", settings.home.string()};
    spec.arguments.insert(spec.arguments.end(), settings.programOptions.begin(),
                          settings.programOptions.end());
    spec.arguments.insert(spec.arguments.end(), words.begin(), words.end());
    return spec;
}

}  // namespace multiscene::studio
